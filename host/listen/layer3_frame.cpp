#include "layer3_frame.h"

#include <algorithm>

namespace brindle::host {

namespace {

constexpr std::size_t kHeader = 4;
constexpr std::size_t kCrc = 2;

class BitReader {
public:
    explicit BitReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    unsigned take(int bits) {
        unsigned value = 0;
        for (; bits > 0; --bits, ++place_) {
            value = value << 1 | ((bytes_[place_ / 8] >> (7 - place_ % 8)) & 1U);
        }
        return value;
    }
    void skip(std::size_t bits) { place_ += bits; }

private:
    std::span<const std::uint8_t> bytes_;
    std::size_t place_ = 0;
};

std::size_t side_size(const StreamFormat& format) {
    if (format.is_mpeg1) {
        return format.channels == 2 ? 32 : 17;
    }
    return format.channels == 2 ? 17 : 9;
}

void read_granule(BitReader& bits, bool is_mpeg1, Layer3Frame& parts) {
    constexpr unsigned kMaxBigValues = 288;  // pairs of the 576 frequency lines
    constexpr std::size_t kRest = 22 + 3;    // tables and regions, then flags
    constexpr int kGain = 8;
    parts.data_bits += bits.take(12);
    parts.is_valid = bits.take(9) <= kMaxBigValues && parts.is_valid;
    bits.skip(kGain + (is_mpeg1 ? 4U : 9U));
    const bool is_switched = bits.take(1) == 1;
    // Of a long block nothing switches; its first two bits belong to a table.
    parts.is_valid = (bits.take(2) != 0 || !is_switched) && parts.is_valid;
    bits.skip(kRest - 2 - (is_mpeg1 ? 0U : 1U));
}

}  // namespace

std::optional<Layer3Frame> read_layer3_frame(std::span<const std::uint8_t> frame,
                                             const StreamFormat& format) {
    Layer3Frame parts;
    parts.side_begin = kHeader + (format.is_protected ? kCrc : 0);
    parts.own_begin = parts.side_begin + side_size(format);
    if (frame.size() < parts.own_begin) {
        return std::nullopt;
    }
    parts.own_bytes = frame.size() - parts.own_begin;
    BitReader bits(frame.subspan(parts.side_begin));
    const auto channels = static_cast<std::size_t>(format.channels);
    if (format.is_mpeg1) {
        parts.main_data_begin = bits.take(9);
        bits.skip((channels == 2 ? 3 : 5) + 4 * channels);
    } else {
        parts.main_data_begin = bits.take(8);
        bits.skip(channels);
    }
    for (std::size_t part = channels * (format.is_mpeg1 ? 2 : 1); part > 0; --part) {
        read_granule(bits, format.is_mpeg1, parts);
    }
    return parts;
}

std::vector<std::uint8_t> without_data(std::span<const std::uint8_t> frame,
                                       const StreamFormat& format, const Layer3Frame& parts,
                                       std::size_t main_data_begin) {
    std::vector<std::uint8_t> empty(frame.begin(), frame.end());
    std::fill(empty.begin() + static_cast<std::ptrdiff_t>(parts.side_begin),
              empty.begin() + static_cast<std::ptrdiff_t>(parts.own_begin), std::uint8_t{0});
    if (format.is_mpeg1) {
        empty[parts.side_begin] = static_cast<std::uint8_t>(main_data_begin >> 1);
        empty[parts.side_begin + 1] = static_cast<std::uint8_t>((main_data_begin & 1U) << 7);
    } else {
        empty[parts.side_begin] = static_cast<std::uint8_t>(main_data_begin);
    }
    return empty;
}

}  // namespace brindle::host
