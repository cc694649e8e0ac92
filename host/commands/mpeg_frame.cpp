#include "commands/mpeg_frame.h"

#include <array>

namespace brindle::host {

namespace {

using Rates = std::array<int, 15>;

// kbit/s by the bit rate's index; 0 is free format, 15 is reserved.
constexpr Rates kVersion1Layer1{0,   32,  64,  96,  128, 160, 192, 224,
                                256, 288, 320, 352, 384, 416, 448};
constexpr Rates kVersion1Layer2{0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384};
constexpr Rates kVersion1Layer3{0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320};
constexpr Rates kVersion2Layer1{0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256};
constexpr Rates kVersion2Layer23{0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160};

const Rates& rates_of(int version, int layer) {
    if (version != 1) {
        return layer == 1 ? kVersion2Layer1 : kVersion2Layer23;
    }
    return layer == 1 ? kVersion1Layer1 : layer == 2 ? kVersion1Layer2 : kVersion1Layer3;
}

std::int64_t length_of(const MpegFrame& frame) {
    constexpr int kBitsPerKilobit = 1'000;
    constexpr int kBitsPerByte = 8;
    constexpr int kLayer1Slot = 4;
    const int padding = static_cast<int>(frame.bits >> 9U & 1U);
    const int slot = frame.layer == 1 ? kLayer1Slot : 1;
    const int slots =
        frame.samples() * frame.kbps * kBitsPerKilobit / (kBitsPerByte * slot) / frame.frequency;
    return frame.is_free_format() ? 0 : std::int64_t{slots + padding} * slot;
}

}  // namespace

int MpegFrame::samples() const {
    constexpr int kLayer1 = 384;
    constexpr int kWhole = 1'152;
    if (layer == 1) {
        return kLayer1;
    }
    return layer == 3 && version != 1 ? kWhole / 2 : kWhole;
}

std::string MpegFrame::text() const {
    constexpr int kVersion25 = 25;
    return "MPEG " + (version == kVersion25 ? "2.5" : std::to_string(version)) + " Layer " +
           std::to_string(layer) + ", " + std::to_string(frequency) + " Hz";
}

bool is_same_kind(const MpegFrame& a, const MpegFrame& b) {
    return a.version == b.version && a.layer == b.layer && a.frequency == b.frequency;
}

std::optional<MpegFrame> mpeg_frame_in(std::string_view bytes) {
    constexpr std::uint32_t kSync = 0xFFE0'0000U;
    constexpr unsigned kReserved = 3;  // of the frequency
    constexpr unsigned kReservedEmphasis = 2;
    constexpr std::array<int, 4> kVersions{25, 0, 2, 1};
    constexpr std::array<int, 4> kLayers{0, 3, 2, 1};
    constexpr std::array<int, 3> kFrequencies{44'100, 48'000, 32'000};
    if (bytes.size() < MpegFrame::kHeaderBytes) {
        return std::nullopt;
    }
    MpegFrame frame;
    for (std::size_t i = 0; i < MpegFrame::kHeaderBytes; ++i) {
        frame.bits = frame.bits << 8U | static_cast<std::uint8_t>(bytes[i]);
    }
    frame.version = kVersions.at(frame.bits >> 19U & 3U);
    frame.layer = kLayers.at(frame.bits >> 17U & 3U);
    const unsigned rate = frame.bits >> 12U & 15U;
    const unsigned frequency = frame.bits >> 10U & 3U;
    if ((frame.bits & kSync) != kSync || frame.version == 0 || frame.layer == 0 ||
        rate == Rates().size() || frequency == kReserved ||
        (frame.bits & 3U) == kReservedEmphasis) {
        return std::nullopt;
    }
    frame.kbps = rates_of(frame.version, frame.layer).at(rate);
    frame.frequency = kFrequencies.at(frequency) / (frame.version == 1   ? 1
                                                    : frame.version == 2 ? 2
                                                                         : 4);
    frame.length = length_of(frame);
    return frame;
}

}  // namespace brindle::host
