#include "encoder_delay.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace brindle::host {

namespace {

bool stands_at(std::span<const std::uint8_t> bytes, std::size_t place, std::string_view text) {
    return bytes.size() >= place + text.size() &&
           std::equal(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(place));
}

// After the side information of MPEG-1 stereo, MPEG-1 mono or MPEG-2 stereo, MPEG-2 mono.
constexpr std::array<std::size_t, 3> kPlaces{36, 21, 13};

// Start of the LAME part: after the letters, the flags and the fields set in the flags.
std::size_t lame_part(std::span<const std::uint8_t> frame) {
    for (const std::size_t place : kPlaces) {
        if (!stands_at(frame, place, "Xing") && !stands_at(frame, place, "Info")) {
            continue;
        }
        constexpr std::size_t kLettersAndFlags = 8;
        if (frame.size() < place + kLettersAndFlags) {
            break;
        }
        // Frames, bytes, table of contents, quality.
        constexpr std::array<std::size_t, 4> kSizes{4, 4, 100, 4};
        const unsigned flags = frame[place + kLettersAndFlags - 1];
        std::size_t end = place + kLettersAndFlags;
        for (std::size_t field = 0; field < kSizes.size(); ++field) {
            end += (flags >> field & 1U) != 0 ? kSizes.at(field) : 0;
        }
        return end;
    }
    return frame.size();
}

}  // namespace

//   encoder 9 | revision and method 1 | lowpass 1 | gains 8 | flags 1 | rate 1 | delays 3
//
// The delays are 12 bits each: samples before the sound, samples after it.
EncoderDelay read_encoder_delay(std::span<const std::uint8_t> frame) {
    constexpr std::size_t kDelays = 21;
    constexpr std::int64_t kDecoderDelay = 529;
    const std::size_t begin = lame_part(frame);
    const bool is_known = stands_at(frame, begin, "LAME") || stands_at(frame, begin, "Lavf") ||
                          stands_at(frame, begin, "Lavc");
    if (!is_known || frame.size() < begin + kDelays + 3) {
        return {};
    }
    const std::span<const std::uint8_t> delays = frame.subspan(begin + kDelays);
    const std::int64_t before = delays[0] << 4 | delays[1] >> 4;
    const std::int64_t after = (delays[1] & 0xF) << 8 | delays[2];
    return {before + kDecoderDelay, std::max<std::int64_t>(after - kDecoderDelay, 0)};
}

}  // namespace brindle::host
