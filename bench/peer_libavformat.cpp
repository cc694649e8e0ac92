extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/log.h>
}

#include <string_view>

#include <benchmark/benchmark.h>

#include "peers.h"

namespace brindle::bench::libavformat {
namespace {

// The library that ffprobe uses.
AVFormatContext* opened(const std::string& path) {
    av_log_set_level(AV_LOG_QUIET);
    AVFormatContext* context = nullptr;
    if (avformat_open_input(&context, path.c_str(), nullptr, nullptr) == 0) {
        avformat_find_stream_info(context, nullptr);
    }
    return context;
}

}  // namespace

void open(const std::string& path) {
    AVFormatContext* context = opened(path);
    auto sum = static_cast<std::size_t>(context->duration + context->bit_rate);
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(context->metadata, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        sum += std::string_view(entry->value).size();
    }
    benchmark::DoNotOptimize(sum);
    avformat_close_input(&context);
}

void walk(const std::string& path) {
    AVFormatContext* context = opened(path);
    AVPacket* packet = av_packet_alloc();
    std::size_t frames = 0;
    while (av_read_frame(context, packet) == 0) {
        ++frames;
        av_packet_unref(packet);
    }
    benchmark::DoNotOptimize(frames);
    av_packet_free(&packet);
    avformat_close_input(&context);
}

}  // namespace brindle::bench::libavformat
