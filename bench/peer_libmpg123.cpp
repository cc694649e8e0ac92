#include <memory>
#include <mpg123.h>

#include <benchmark/benchmark.h>

#include "peers.h"

namespace brindle::bench::libmpg123 {
namespace {

struct Deleter {
    void operator()(mpg123_handle* handle) const {
        mpg123_close(handle);
        mpg123_delete(handle);
    }
};
using Handle = std::unique_ptr<mpg123_handle, Deleter>;

Handle opened(const std::string& path) {
    Handle handle(mpg123_new(nullptr, nullptr));
    mpg123_param(handle.get(), MPG123_ADD_FLAGS, MPG123_QUIET, 0);
    mpg123_open(handle.get(), path.c_str());
    return handle;
}

}  // namespace

void open(const std::string& path) {
    const Handle handle = opened(path);
    mpg123_frameinfo info{};
    mpg123_info(handle.get(), &info);
    mpg123_id3v1* record = nullptr;
    mpg123_id3v2* tag = nullptr;
    mpg123_id3(handle.get(), &record, &tag);
    auto sum = static_cast<std::size_t>(info.bitrate + mpg123_length(handle.get()));
    for (std::size_t number = 0; tag != nullptr && number < tag->extras; ++number) {
        sum += tag->extra[number].text.fill;
    }
    benchmark::DoNotOptimize(sum);
}

void walk(const std::string& path) {
    const Handle handle = opened(path);
    mpg123_scan(handle.get());
    benchmark::DoNotOptimize(mpg123_length(handle.get()));
}

}  // namespace brindle::bench::libmpg123
