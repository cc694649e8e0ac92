#include "mpeg/duration.h"

#include "util/fixed_decimal.h"
#include "util/numeric_text.h"

namespace brindle {
namespace {

constexpr std::int64_t kBitsPerByte = 8;
constexpr std::int64_t kMillisecondsPerSecond = 1'000;
// Bit rates are in units of 1,000 bits elsewhere; this one average counts in 1,024.
constexpr std::int64_t kBitsPerAverageUnit = 1'024;

// A decimal of four places to the nearest whole number.
std::int32_t whole(std::int64_t decimal) {
    return checked_long(divide_half_even(decimal, kDecimalScale));
}

void constant_rate_duration(StreamState& state, std::int32_t audio_bytes) {
    state.average_bit_rate = state.header.BitRate;
    state.duration_ms =
        whole(divide_half_even(audio_bytes * kBitsPerByte * kDecimalScale, state.header.BitRate));
}

void variable_rate_duration(StreamState& state, std::int32_t audio_bytes) {
    const std::int32_t samples =
        samples_per_frame(state.header.MpegVersion, state.header.MpegLayer);
    const std::int64_t all_samples = checked_long(std::int64_t{samples} * state.frame_counter);
    const std::int64_t seconds =
        divide_half_even(all_samples * kDecimalScale, state.header.SamplingFrequency);
    state.duration_ms = whole(seconds * kMillisecondsPerSecond);
    if (audio_bytes == 0) {
        return;
    }
    const std::int64_t frames_per_second =
        divide_half_even(state.header.SamplingFrequency, samples);
    const std::int64_t bytes_per_frame =
        divide_half_even(audio_bytes * kDecimalScale, state.frame_counter);
    state.average_bit_rate = checked_long(divide_half_even(
        bytes_per_frame * frames_per_second * kBitsPerByte, kBitsPerAverageUnit * kDecimalScale));
}

}  // namespace

std::int32_t samples_per_frame(std::int16_t version, std::int16_t layer) {
    if (layer == 1) {
        return 384;
    }
    return layer == 3 && version != 1 ? 576 : 1'152;
}

void CalcDuration(StreamState& state, std::int32_t AudioBytes) {
    if (state.header.BitRate <= 0) {
        state.duration_ms = kDurationUnknown;
        return;
    }
    if (!state.xing.Tag.empty()) {
        state.frame_counter = state.xing.Frames;
    }
    if (state.header.VBR) {
        variable_rate_duration(state, AudioBytes);
    } else {
        constant_rate_duration(state, AudioBytes);
    }
}

String SecsToTimeString(double& Secs) {
    constexpr std::int32_t kSecondsPerMinute = 60;
    const std::int32_t rounded = round_to_long(Secs);
    Secs = rounded;
    const String minutes = to_text(rounded / kSecondsPerMinute);
    const String seconds = to_text(rounded % kSecondsPerMinute);
    return minutes + (seconds.size() == 1 ? u":0" : u":") + seconds;
}

}  // namespace brindle
