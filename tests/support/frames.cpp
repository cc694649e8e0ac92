#include "support/frames.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace brindle::test {
namespace {

using Rates = std::array<int, 14>;  // indices 1 to 14

// clang-format off
constexpr Rates kMpeg1Layer1  {32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448};
constexpr Rates kMpeg1Layer2  {32, 48, 56,  64,  80,  96, 112, 128, 160, 192, 224, 256, 320, 384};
constexpr Rates kMpeg1Layer3  {32, 40, 48,  56,  64,  80,  96, 112, 128, 160, 192, 224, 256, 320};
constexpr Rates kMpeg2Layer1  {32, 48, 56,  64,  80,  96, 112, 128, 144, 160, 176, 192, 224, 256};
constexpr Rates kMpeg2Layer23 { 8, 16, 24,  32,  40,  48,  56,  64,  80,  96, 112, 128, 144, 160};
constexpr std::array<int, 3> kMpeg1Frequencies {44100, 48000, 32000};
// clang-format on

const Rates& rates(int version, int layer) {
    if (version == 1) {
        return layer == 1 ? kMpeg1Layer1 : layer == 2 ? kMpeg1Layer2 : kMpeg1Layer3;
    }
    return layer == 1 ? kMpeg2Layer1 : kMpeg2Layer23;
}

template <typename Table>
unsigned index_in(const Table& table, int value, const char* what) {
    const auto found = std::find(table.begin(), table.end(), value);
    if (found == table.end()) {
        throw std::invalid_argument(std::string("no such ") + what);
    }
    return static_cast<unsigned>(found - table.begin());
}

}  // namespace

Bytes HeaderBits::bytes() const {
    const auto byte = [](unsigned value) { return static_cast<std::uint8_t>(value); };
    return {byte(sync >> 3U), byte((sync & 7U) << 5U | version << 3U | layer << 1U | protection),
            byte(bitrate << 4U | frequency << 2U | padding << 1U | private_bit),
            byte(mode << 6U | extension << 4U | copyright << 3U | original << 2U | emphasis)};
}

HeaderBits Frame::bits() const {
    const int divisor = version == 1 ? 1 : version == 2 ? 2 : 4;
    HeaderBits bits;
    bits.version = version == 1 ? 3 : version == 2 ? 2 : 0;
    bits.layer = static_cast<unsigned>(4 - layer);
    bits.protection = crc ? 0 : 1;
    bits.bitrate = index_in(rates(version, layer), kbps, "bitrate") + 1;
    bits.frequency = index_in(kMpeg1Frequencies, frequency * divisor, "frequency");
    bits.padding = padding ? 1 : 0;
    bits.mode = static_cast<unsigned>(mode);
    bits.copyright = copyright ? 1 : 0;
    bits.original = original ? 1 : 0;
    bits.emphasis = emphasis;
    return bits;
}

std::size_t Frame::samples() const {
    if (layer == 1) {
        return 384;
    }
    return layer == 3 && version != 1 ? 576 : 1152;
}

std::size_t Frame::length() const {
    // A slot is the unit in which frames are padded: four bytes in Layer I, else one.
    const std::size_t slot = layer == 1 ? 4 : 1;
    const std::size_t bits_of_1000_frames = samples() * static_cast<std::size_t>(kbps) * 1000;
    const std::size_t slots =
        bits_of_1000_frames / (static_cast<std::size_t>(frequency) * 8 * slot);
    return (slots + (padding ? 1 : 0)) * slot;
}

std::size_t Frame::length_as_read() const {
    constexpr std::size_t kLayer1Slot = 4;
    return length() + (layer == 1 && padding ? kLayer1Slot : 0);
}

Bytes Frame::bytes(std::size_t number) const {
    Bytes frame = bits().bytes();
    // Steps of 5 below 128 spell neither a sync nor any of the field's letters.
    for (std::size_t place = frame.size(); place < bytes_in_stream.value_or(length()); ++place) {
        frame.push_back(static_cast<std::uint8_t>((number * 7 + place * 5) % 128));
    }
    return frame;
}

Bytes stream(const Frame& frame, std::size_t count) {
    Bytes bytes;
    for (std::size_t number = 0; number < count; ++number) {
        bytes += frame.bytes(number);
    }
    return bytes;
}

Bytes variable_stream(const Frame& frame, const std::vector<int>& kbps) {
    Bytes bytes;
    std::size_t number = 0;
    for (const int rate : kbps) {
        bytes += frame.with_kbps(rate).bytes(number++);
    }
    return bytes;
}

Bytes xing_frame(const Frame& frame, const Xing& xing) {
    Bytes bytes = frame.bits().bytes() + zeros(frame.length() - 4);
    const Bytes header = Bytes(xing.letters) + big_endian(xing.flags, 4) +
                         big_endian(xing.frames, 4) + big_endian(xing.bytes, 4);
    std::copy(header.begin(), header.end(),
              bytes.begin() + static_cast<std::ptrdiff_t>(xing.offset));
    return bytes;
}

}  // namespace brindle::test
