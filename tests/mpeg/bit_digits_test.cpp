#include "mpeg/bit_digits.h"

#include <array>

#include <gtest/gtest.h>

#include <brindle/error.h>

#include "mpeg/clsMPEG.h"

namespace brindle::test {
namespace {

TEST(BitDigits, BytesBecomeEightDigitsEachMostSignificantFirst) {
    EXPECT_EQ(BytesToBitString(std::array<std::uint8_t, 3>{0x00, 0x81, 0xF0}),
              u"000000001000000111110000");
    EXPECT_EQ(BytesToBitString({}), u"");
}

TEST(BitDigits, TwoAndFourDigitsAreNumbers) {
    EXPECT_EQ(TwoBitToDec(u"00"), 0);
    EXPECT_EQ(TwoBitToDec(u"01"), 1);
    EXPECT_EQ(TwoBitToDec(u"10"), 2);
    EXPECT_EQ(TwoBitToDec(u"11"), 3);
    EXPECT_EQ(FourBitToDec(u"1000"), 8);
    EXPECT_EQ(FourBitToDec(u"0111"), 7);
}

TEST(BitDigits, CharactersThatAreNoDigitGiveMinusOne) {
    EXPECT_EQ(TwoBitToDec(u"1x"), -1);
    EXPECT_EQ(FourBitToDec(u"011"), -1);
}

TEST(BitDigits, BinToDecReadsAnyLength) {
    EXPECT_EQ(clsMPEG::BinToDec(u"1010"), 10);
    EXPECT_EQ(clsMPEG::BinToDec(u""), 0);
    EXPECT_EQ(clsMPEG::BinToDec(u"0"), 0);
    EXPECT_EQ(clsMPEG::BinToDec(u"1" + String(31, u'0')), 2147483648);
    EXPECT_EQ(clsMPEG::BinToDec(String(32, u'1')), 4294967295);
}

TEST(BitDigits, BinToDecCountsNothingButOnes) {
    EXPECT_EQ(clsMPEG::BinToDec(u"1x2 1"), 17);
}

// The range is 922,337,203,685,477: 2 to the 49th fits, 2 to the 50th does not.
TEST(BitDigits, BinToDecLeavesOutWhatDoesNotFit) {
    EXPECT_EQ(clsMPEG::BinToDec(u"1" + String(49, u'0')), 562949953421312);
    EXPECT_EQ(clsMPEG::BinToDec(u"1" + String(50, u'0')), 0);
    for (const std::size_t zeros : {61U, 62U, 63U, 64U, 200U}) {
        EXPECT_EQ(clsMPEG::BinToDec(u"1" + String(zeros, u'0') + u"1"), 1) << zeros;
    }
    // 2^49 + 2^48 fits, with 2^47 it would be 985,162,418,487,296.
    EXPECT_EQ(clsMPEG::BinToDec(u"111" + String(47, u'0')), 844424930131968);
}

TEST(BitDigits, ByteToBitTakesTwoBytesWithoutLeadingZeros) {
    EXPECT_EQ(clsMPEG::ByteToBit(std::array<std::uint8_t, 2>{0, 5}), u"101");
    EXPECT_EQ(clsMPEG::ByteToBit(std::array<std::uint8_t, 2>{0, 0}), u"");
    EXPECT_EQ(clsMPEG::ByteToBit(std::array<std::uint8_t, 2>{1, 0}), u"100000000");
    EXPECT_EQ(clsMPEG::ByteToBit(std::array<std::uint8_t, 4>{0x80, 1, 255, 255}),
              u"1000000000000001");
}

TEST(BitDigits, ByteToBitOfOneByteIsOutOfRange) {
    try {
        static_cast<void>(clsMPEG::ByteToBit(std::array<std::uint8_t, 1>{5}));
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), 9);
    }
}

}  // namespace
}  // namespace brindle::test
