// What a frame header means, by formulas instead of tables: a second opinion on the decoder.
#pragma once

#include <cstdint>

namespace brindle::test {

struct HeaderMeaning {
    bool valid = false;
    int version = 0;
    int layer = 0;
    int crc_bytes = 0;
    int kbps = 0;
    int frequency = 0;
    int padding = 0;
    int mode = 0;
    int copyright = 0;
    int original = 0;
    int emphasis = 0;
    int length = 0;
};

// Four steps to the octave from 32 on: 32 40 48 56, 64 80 96 112, 128 160 ...
constexpr int octave_rate(int step) {
    return (4 + step % 4) * 8 << (step / 4);
}

constexpr int kbps_of(int version, int layer, int index) {
    if (index == 0 || index == 15) {
        return 0;
    }
    if (version == 1) {
        if (layer == 1) {
            return 32 * index;
        }
        if (layer == 3) {
            return octave_rate(index - 1);
        }
        return index == 1 ? 32 : octave_rate(index);  // as Layer III, but without 40
    }
    if (layer != 1) {
        return index <= 8 ? 8 * index : 64 + 16 * (index - 8);
    }
    if (index <= 4) {
        return index == 1 ? 32 : 32 + 8 * index;
    }
    return index <= 12 ? 16 * index : 192 + 32 * (index - 12);
}

constexpr int frequency_of(int version, int index) {
    const int at_version_1 = index == 0 ? 44100 : index == 1 ? 48000 : index == 2 ? 32000 : 0;
    return at_version_1 / (version == 1 ? 1 : version == 2 ? 2 : 4);
}

constexpr HeaderMeaning meaning_of(std::uint32_t bits) {
    const auto field = [bits](int last_bit, int width) {
        return static_cast<int>((bits >> last_bit) & ((1U << width) - 1U));
    };
    HeaderMeaning meaning;
    const int version_bits = field(19, 2);
    const int layer_bits = field(17, 2);
    meaning.version = version_bits == 3 ? 1 : version_bits == 2 ? 2 : version_bits == 0 ? 25 : 0;
    meaning.layer = layer_bits == 0 ? 0 : 4 - layer_bits;
    meaning.crc_bytes = field(16, 1) == 1 ? 0 : 2;
    meaning.kbps = kbps_of(meaning.version, meaning.layer, field(12, 4));
    meaning.frequency = frequency_of(meaning.version, field(10, 2));
    meaning.padding = field(9, 1) * (meaning.layer == 1 ? 2 : 1);
    meaning.mode = field(6, 2);
    meaning.copyright = field(3, 1);
    meaning.original = field(2, 1);
    meaning.emphasis = field(0, 2);
    meaning.valid = field(21, 11) == 0x7FF && meaning.version != 0 && meaning.layer != 0 &&
                    meaning.kbps != 0 && meaning.frequency != 0 && meaning.emphasis != 2;
    if (meaning.valid) {
        // Samples per frame, divided by the 8 bits of a byte, times the bits of a second; Layer I
        // in units of 4 bytes.
        const int slots_per_second = meaning.layer == 1                           ? 12
                                     : meaning.layer == 3 && meaning.version != 1 ? 72
                                                                                  : 144;
        meaning.length =
            meaning.kbps * 1000 * slots_per_second / meaning.frequency + meaning.padding;
        if (meaning.layer == 1) {
            meaning.length *= 4;
        }
    }
    return meaning;
}

}  // namespace brindle::test
