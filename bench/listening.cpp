#include "listening.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ebur128.h>
#include <filesystem>
#include <memory>
#include <mpg123.h>
#include <vector>

#include <benchmark/benchmark.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/text.h>

#include "listen/listen_to_file.h"

namespace brindle::bench {
namespace {

struct DeleteDecoder {
    void operator()(mpg123_handle* handle) const { mpg123_delete(handle); }
};
struct DestroyMeter {
    void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
};

void require(bool holds, const char* what) {
    if (!holds) {
        std::perror(what);
        std::abort();
    }
}

void listen(const std::string& path, bool quick) {
    cMPEGHeader header;
    header.FileName(from_utf8(path));
    const auto heard = host::listen_to_file(
        header, static_cast<std::int64_t>(std::filesystem::file_size(path)), {.quick = quick});
    require(heard && heard->sound && heard->is_whole == !quick, "listen");
    benchmark::DoNotOptimize(heard->loudness);
}

}  // namespace

void listen_limit(const std::string& path) {
    const std::unique_ptr<mpg123_handle, DeleteDecoder> decoder(mpg123_new(nullptr, nullptr));
    mpg123_param(decoder.get(), MPG123_REMOVE_FLAGS, MPG123_GAPLESS, 0);
    mpg123_param(decoder.get(), MPG123_ADD_FLAGS, MPG123_QUIET | MPG123_FORCE_FLOAT, 0);
    long rate = 0;
    int channels = 0;
    int encoding = 0;
    require(mpg123_open(decoder.get(), path.c_str()) == MPG123_OK &&
                mpg123_getformat(decoder.get(), &rate, &channels, &encoding) == MPG123_OK,
            "mpg123");
    const std::unique_ptr<ebur128_state, DestroyMeter> meter(
        ebur128_init(static_cast<unsigned>(channels), static_cast<unsigned long>(rate),
                     EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK));
    constexpr long kBlocksPerSecond = 100;
    const auto width = static_cast<std::size_t>(channels);
    std::vector<float> block(static_cast<std::size_t>(rate / kBlocksPerSecond) * width);
    std::size_t bytes = 0;
    int outcome = MPG123_OK;
    while (outcome == MPG123_OK) {
        outcome = mpg123_read(decoder.get(), reinterpret_cast<unsigned char*>(block.data()),
                              block.size() * sizeof(float), &bytes);
        ebur128_add_frames_float(meter.get(), block.data(), bytes / sizeof(float) / width);
    }
    double loudness = 0;
    double range = 0;
    double peak = 0;
    ebur128_loudness_global(meter.get(), &loudness);
    ebur128_loudness_range(meter.get(), &range);
    ebur128_true_peak(meter.get(), 0, &peak);
    require(outcome == MPG123_DONE && loudness < 0 && peak > 0, "limit of listening");
    benchmark::DoNotOptimize(loudness + range + peak);
}

void listen_whole(const std::string& path) {
    listen(path, false);
}

void listen_quickly(const std::string& path) {
    listen(path, true);
}

}  // namespace brindle::bench
