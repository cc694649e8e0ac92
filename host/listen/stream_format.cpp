#include "stream_format.h"

#include <array>

namespace brindle::host {

namespace {

// Indexed by the bits of the field; 0 is reserved.
constexpr std::array<int, 4> kLayers{0, 3, 2, 1};
constexpr std::array<int, 4> kFrequencyDivisors{4, 0, 2, 1};  // by version
constexpr std::array<std::int32_t, 4> kFrequencies{44'100, 48'000, 32'000, 0};

constexpr unsigned kMpeg1 = 3;
constexpr unsigned kSingleChannel = 3;

std::int32_t samples_per_frame(int layer, bool is_mpeg1) {
    if (layer == 1) {
        return 384;
    }
    return layer == 3 && !is_mpeg1 ? 576 : 1152;
}

}  // namespace

//   AAAAAAAA AAABBCCD EEEEFFGH IIJJKLMM
//
//   B version   C layer   D protection   F sampling frequency   I mode
StreamFormat stream_format(std::span<const std::uint8_t> frame) {
    const unsigned version = (frame[1] >> 3) & 3U;
    const int layer = kLayers[(frame[1] >> 1) & 3U];
    const bool is_mpeg1 = version == kMpeg1;
    return {.layer = layer,
            .is_mpeg1 = is_mpeg1,
            .is_protected = (frame[1] & 1U) == 0,
            .channels = frame[3] >> 6 == kSingleChannel ? 1 : 2,
            .frequency = kFrequencies[(frame[2] >> 2) & 3U] / kFrequencyDivisors[version],
            .samples_per_frame = samples_per_frame(layer, is_mpeg1)};
}

}  // namespace brindle::host
