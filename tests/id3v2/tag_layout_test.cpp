#include "id3v2/tag_layout.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace brindle {
namespace {

using Digits = std::vector<std::uint8_t>;

struct Number {
    const char* name;
    Digits bytes;
    int shift;
    std::uint64_t value;
};

TEST(TagLayout, NumbersAreTheSumOfTheirDigitsInTheBase) {
    const Number numbers[] = {
        {"no digit", {}, kPlainShift, 0},
        {"plain 258", {0, 0, 1, 2}, kPlainShift, 258},
        {"plain, all bits", {255, 255, 255, 255}, kPlainShift, 4294967295},
        {"plain, three bytes", {1, 0, 0}, kPlainShift, 65536},
        {"syncsafe 257", {0, 0, 2, 1}, kSyncsafeShift, 257},
        {"syncsafe, largest proper", {127, 127, 127, 127}, kSyncsafeShift, 268435455},
        // 255 x (128^3 + 128^2 + 128 + 1) = 255 x 2113665
        {"syncsafe, top bits count", {255, 255, 255, 255}, kSyncsafeShift, 538984575},
        {"syncsafe, one top bit", {0, 0, 0, 128}, kSyncsafeShift, 128},
        {"syncsafe, top bit of the next", {0, 0, 128, 0}, kSyncsafeShift, 16384},
    };
    for (const Number& number : numbers) {
        EXPECT_EQ(decode_number(number.bytes, number.shift), number.value) << number.name;
    }
}

TEST(TagLayout, WrittenNumbersArePaddedOnTheLeftOrCutToTheirRightmostDigits) {
    const Number numbers[] = {
        {"padded", {0, 0, 1, 2}, kPlainShift, 258},
        {"syncsafe", {0, 0, 2, 1}, kSyncsafeShift, 257},
        {"syncsafe 4096", {0, 0, 32, 0}, kSyncsafeShift, 4096},
        {"cut to two", {0x34, 0x56}, kPlainShift, 0x123456},
        {"cut to one of seven bits", {1}, kSyncsafeShift, 129},
        {"cut away", {}, kPlainShift, 77},
    };
    for (const Number& number : numbers) {
        Digits bytes(number.bytes.size(), 0xEE);
        encode_number(number.value, number.shift, bytes);
        EXPECT_EQ(bytes, number.bytes) << number.name;
    }
}

RC_GTEST_PROP(TagLayout, WhatIsWrittenInSevenBitDigitsReadsBack, (std::uint32_t number)) {
    const std::uint32_t wanted = number % (1U << 28U);
    std::array<std::uint8_t, 4> bytes{};
    encode_number(wanted, kSyncsafeShift, bytes);
    for (const std::uint8_t byte : bytes) {
        RC_ASSERT(byte < 128);
    }
    RC_ASSERT(decode_number(bytes, kSyncsafeShift) == wanted);
}

TEST(TagLayout, Version2IdsAreKeptUnderTheirVersion3Ids) {
    constexpr std::string_view kIds[][2] = {
        {"TP1", "TPE1"}, {"TT2", "TIT2"}, {"TAL", "TALB"}, {"COM", "COMM"}, {"TRK", "TRCK"},
        {"TEN", "TENC"}, {"TYE", "TYER"}, {"TCO", "TCON"}, {"PIC", "APIC"},
    };
    for (const auto& [version2, kept_as] : kIds) {
        EXPECT_EQ(from_version2_id(version2), kept_as);
    }
}

TEST(TagLayout, OtherVersion2IdsAreKeptUnderTheEmptyId) {
    for (const std::string_view id : {"TXX", "ULT", "WXX", "TP2", "tt2", "TT", "TT22", ""}) {
        EXPECT_EQ(from_version2_id(id), "") << id;
    }
}

TEST(TagLayout, VersionsTwoToFourAreKnown) {
    for (int version = 0; version < 256; ++version) {
        EXPECT_EQ(is_known_version(static_cast<std::uint8_t>(version)),
                  version == 2 || version == 3 || version == 4)
            << version;
    }
}

}  // namespace
}  // namespace brindle
