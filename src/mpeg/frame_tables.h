// The tables of the MPEG audio header, indexed by the bits of each field; 0 is reserved.
#pragma once

#include <array>
#include <cstdint>

namespace brindle {

inline constexpr std::array<std::int16_t, 4> kVersions = {25, 0, 2, 1};
inline constexpr std::array<std::int16_t, 4> kLayers = {0, 3, 2, 1};

using BitRateRow = std::array<std::int32_t, 16>;

// clang-format off
inline constexpr BitRateRow kBitRatesV1Layer1 =
    {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, 0};
inline constexpr BitRateRow kBitRatesV1Layer2 =
    {0, 32, 48, 56,  64,  80,  96, 112, 128, 160, 192, 224, 256, 320, 384, 0};
inline constexpr BitRateRow kBitRatesV1Layer3 =
    {0, 32, 40, 48,  56,  64,  80,  96, 112, 128, 160, 192, 224, 256, 320, 0};
inline constexpr BitRateRow kBitRatesV2Layer1 =
    {0, 32, 48, 56,  64,  80,  96, 112, 128, 144, 160, 176, 192, 224, 256, 0};
inline constexpr BitRateRow kBitRatesV2Layer2And3 =
    {0,  8, 16, 24,  32,  40,  48,  56,  64,  80,  96, 112, 128, 144, 160, 0};

inline constexpr std::array<std::int32_t, 4> kFrequenciesV1  = {44100, 48000, 32000, 0};
inline constexpr std::array<std::int32_t, 4> kFrequenciesV2  = {22050, 24000, 16000, 0};
inline constexpr std::array<std::int32_t, 4> kFrequenciesV25 = {11025, 12000,  8000, 0};
// clang-format on

// In kbit/s. Version and layer must not be reserved ones.
[[nodiscard]] constexpr const BitRateRow& bit_rates(std::int16_t version, std::int16_t layer) {
    if (version == 1) {
        return layer == 1 ? kBitRatesV1Layer1 : layer == 2 ? kBitRatesV1Layer2 : kBitRatesV1Layer3;
    }
    return layer == 1 ? kBitRatesV2Layer1 : kBitRatesV2Layer2And3;
}

// In Hz. The version must not be the reserved one.
[[nodiscard]] constexpr const std::array<std::int32_t, 4>& frequencies(std::int16_t version) {
    return version == 1 ? kFrequenciesV1 : version == 2 ? kFrequenciesV2 : kFrequenciesV25;
}

// Layer I counts its padding in slots of 4 bytes and is given two of them here.
[[nodiscard]] constexpr std::int16_t padding_of(std::int16_t layer) {
    return layer == 1 ? 2 : 1;
}

// The length of a frame in bytes, header included.
[[nodiscard]] constexpr std::int32_t FrameLengthinBytes(std::int32_t BitRate,
                                                        std::int32_t SamplingFrequency,
                                                        std::int16_t Padding,
                                                        std::int16_t MpegLayer,
                                                        std::int16_t MpegVersion) {
    if (MpegLayer == 1) {
        constexpr std::int32_t kSlotBytes = 4;
        return (BitRate * 12'000 / SamplingFrequency + Padding) * kSlotBytes;
    }
    if (MpegLayer == 3 && MpegVersion != 1) {
        return BitRate * 72'000 / SamplingFrequency + Padding;
    }
    return BitRate * 144'000 / SamplingFrequency + Padding;
}

}  // namespace brindle
