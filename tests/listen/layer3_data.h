// Frames of Layer III with side information chosen by the test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/bytes.h"
#include "support/frames.h"

namespace brindle::test {

// Of one channel in one granule.
struct Granule {
    unsigned length = 0;  // part2_3_length, bits
    unsigned big_values = 0;
    unsigned block_type = 0;
    bool is_switched = false;
};

struct SideInformation {
    unsigned main_data_begin = 0;
    // MPEG-1: two for each channel; one otherwise. What is not given is empty.
    std::vector<Granule> granules = {};
};

class BitWriter {
public:
    void put(unsigned value, int bits) {
        for (int bit = bits - 1; bit >= 0; --bit) {
            if (count_ % 8 == 0) {
                bytes_.push_back(0);
            }
            bytes_.back() = static_cast<std::uint8_t>(bytes_.back() |
                                                      ((value >> bit & 1U) << (7 - count_ % 8)));
            ++count_;
        }
    }
    [[nodiscard]] const Bytes& bytes() const { return bytes_; }

private:
    Bytes bytes_;
    std::size_t count_ = 0;
};

// As ISO 11172-3 and 13818-3 have it.
inline Bytes side_bytes(const Frame& frame, const SideInformation& side) {
    const bool is_mono = frame.mode == Mode::SingleChannel;
    const bool is_mpeg1 = frame.version == 1;
    const int channels = is_mono ? 1 : 2;
    BitWriter bits;
    bits.put(side.main_data_begin, is_mpeg1 ? 9 : 8);
    if (is_mpeg1) {
        bits.put(0, (is_mono ? 5 : 3) + 4 * channels);
    } else {
        bits.put(0, is_mono ? 1 : 2);
    }
    std::vector<Granule> granules = side.granules;
    granules.resize(static_cast<std::size_t>(channels * (is_mpeg1 ? 2 : 1)));
    for (const Granule& granule : granules) {
        bits.put(granule.length, 12);
        bits.put(granule.big_values, 9);
        bits.put(0, 8);                 // global_gain
        bits.put(0, is_mpeg1 ? 4 : 9);  // scalefac_compress
        bits.put(granule.is_switched ? 1 : 0, 1);
        bits.put(granule.block_type, 2);
        bits.put(0, 20);                // the rest of tables and regions
        bits.put(0, is_mpeg1 ? 3 : 2);  // flags
    }
    return bits.bytes();
}

// The frame's own bytes are all 0.
inline Bytes layer3_frame(const Frame& frame, const SideInformation& side) {
    Bytes bytes = frame.bits().bytes() + (frame.crc ? zeros(2) : Bytes()) + side_bytes(frame, side);
    return bytes + zeros(frame.length() - bytes.size());
}

}  // namespace brindle::test
