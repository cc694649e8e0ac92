#include "frame_decoder.h"

#include <algorithm>
#include <bit>
#include <mpg123.h>
#include <new>

namespace brindle::host {

namespace {

// A damaged frame may scale its samples beyond every float, and one of those spoils each sum.
bool are_finite(std::span<const float> samples) {
    constexpr std::uint32_t kExponent = 0x7F80'0000;
    std::uint32_t largest = 0;
    for (const float sample : samples) {
        largest = std::max(largest, std::bit_cast<std::uint32_t>(sample) & kExponent);
    }
    return largest != kExponent;
}

std::size_t data_bytes(const Layer3Frame& parts) {
    constexpr std::size_t kBits = 8;
    return (parts.data_bits + kBits - 1) / kBits;
}

}  // namespace

void FrameDecoder::Deleter::operator()(mpg123_handle* handle) const {
    mpg123_delete(handle);
}

FrameDecoder::FrameDecoder(const StreamFormat& format)
    : format_(format),
      handle_(mpg123_new(nullptr, nullptr)),
      silence_(static_cast<std::size_t>(format.samples_per_frame * format.channels)) {
    if (!handle_) {
        throw std::bad_alloc();
    }
    // No sample is left out, nothing is taken for a header of an encoder or a tag, and a frame is
    // decoded as soon as it is there.
    mpg123_param(handle_.get(), MPG123_REMOVE_FLAGS, MPG123_GAPLESS | MPG123_AUTO_RESAMPLE, 0);
    mpg123_param(handle_.get(), MPG123_ADD_FLAGS,
                 MPG123_QUIET | MPG123_FORCE_FLOAT | MPG123_IGNORE_INFOFRAME | MPG123_SKIP_ID3V2 |
                     MPG123_NO_READAHEAD |
                     (format.channels == 2 ? MPG123_FORCE_STEREO : MPG123_MONO_MIX),
                 0);
    restart();
}

void FrameDecoder::restart() {
    reservoir_ = 0;
    if (mpg123_open_feed(handle_.get()) != MPG123_OK) {
        throw std::bad_alloc();
    }
}

std::optional<DecodeFault> FrameDecoder::fault_in(const std::optional<Layer3Frame>& parts) const {
    if (!parts || !parts->is_valid) {
        return DecodeFault::InvalidFields;
    }
    if (parts->main_data_begin > reservoir_) {
        return DecodeFault::MissingData;
    }
    if (data_bytes(*parts) > parts->main_data_begin + parts->own_bytes) {
        return DecodeFault::TooMuchData;
    }
    return std::nullopt;
}

FrameDecoder::Decoded FrameDecoder::decode(std::span<const std::uint8_t> frame) {
    std::optional<DecodeFault> fault;
    std::span<const float> samples;
    if (format_.layer == 3) {
        const StreamFormat format = stream_format(frame);
        const auto parts = read_layer3_frame(frame, format);
        fault = fault_in(parts);
        if (!fault) {
            samples = run(frame);
            // The data of two frames does not overlap.
            reservoir_ = parts->main_data_begin + parts->own_bytes - data_bytes(*parts);
        } else if (parts) {
            // With the data that it has kept, the decoder would make noise of the frame.
            samples = run(without_data(frame, format, *parts, reservoir_));
            reservoir_ += parts->own_bytes;
        }
        reservoir_ = std::min(reservoir_, longest_reservoir(format));
    } else {
        samples = run(frame);
    }
    if (samples.size() != silence_.size() || !are_finite(samples)) {
        restart();
        return {silence_, fault.value_or(DecodeFault::Refused)};
    }
    return {samples, fault};
}

// Nothing when the decoder does not make one frame of it.
std::span<const float> FrameDecoder::run(std::span<const std::uint8_t> frame) {
    if (mpg123_feed(handle_.get(), frame.data(), frame.size()) != MPG123_OK) {
        return {};
    }
    off_t number = 0;
    unsigned char* bytes = nullptr;
    std::size_t size = 0;
    int outcome = mpg123_decode_frame(handle_.get(), &number, &bytes, &size);
    if (outcome == MPG123_NEW_FORMAT) {
        outcome = mpg123_decode_frame(handle_.get(), &number, &bytes, &size);
    }
    long left = 0;
    if (outcome != MPG123_OK || bytes == nullptr ||
        mpg123_getstate(handle_.get(), MPG123_BUFFERFILL, &left, nullptr) != MPG123_OK ||
        left != 0) {
        return {};
    }
    // cppcheck-suppress invalidPointerCast; the decoder was told to make floats
    return {reinterpret_cast<const float*>(bytes), size / sizeof(float)};
}

}  // namespace brindle::host
