#include "mpeg/frame_header.h"

#include <array>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "mpeg/header_formulas.h"
#include "support/bytes.h"
#include "support/frames.h"

namespace brindle::test {
namespace {

constexpr std::uint32_t kMeaningfulHeaders = 1U << 21U;
constexpr std::uint32_t kSync = 0xFFE0'0000;

std::uint32_t word(const Bytes& bytes) {
    return header_bits(bytes.data());
}

FrameHeaderRecord record_of(std::uint32_t bits) {
    FrameHeaderRecord record;
    const Bytes bytes = big_endian(bits, 4);
    std::copy(bytes.begin(), bytes.end(), record.HeaderBytes.begin());
    return record;
}

struct Decoded {
    bool ok;
    FrameHeaderRecord record;
};

Decoded decode(std::uint32_t bits) {
    FrameHeaderRecord record = record_of(bits);
    const bool ok = DecodeFrameHeader(record);
    return {ok, record};
}

TEST(FrameHeader, AllTwoMillionHeadersMeanWhatTheFormulasSay) {
    std::uint32_t valid = 0;
    for (std::uint32_t low = 0; low < kMeaningfulHeaders; ++low) {
        const std::uint32_t bits = kSync | low;
        const HeaderMeaning meaning = meaning_of(bits);
        const auto header = parse_frame_header(bits);
        ASSERT_EQ(header.has_value(), meaning.valid) << std::hex << bits;
        if (header) {
            ++valid;
            ASSERT_EQ(header->bits, bits);
            ASSERT_EQ(header->length, meaning.length) << std::hex << bits;
            ASSERT_EQ(header->bit_rate, meaning.kbps) << std::hex << bits;
        }
    }
    // 3 versions, 3 layers, 14 bit rates, 3 frequencies, 3 emphases; nine free bits: protection,
    // padding, private, mode, extension, copyright, original.
    EXPECT_EQ(valid, 3U * 3U * 14U * 3U * 3U * 512U);
}

// The same for what the tables hold, in no time.
TEST(FrameHeader, AllRatesMeanWhatTheFormulasSay) {
    for (std::uint32_t fields = 0; fields < (1U << 11); ++fields) {
        const std::uint32_t bits = kSync | fields << 10;
        const HeaderMeaning meaning = meaning_of(bits);
        const auto header = parse_frame_header(bits);
        ASSERT_EQ(header ? header->bit_rate : 0, meaning.valid ? meaning.kbps : 0)
            << std::hex << bits;
        ASSERT_EQ(header ? header->length : 0, meaning.valid ? meaning.length : 0)
            << std::hex << bits;
        if (meaning.valid) {
            FrameHeaderRecord record = record_of(bits);
            ASSERT_TRUE(DecodeFrameHeader(record)) << std::hex << bits;
            ASSERT_EQ(record.BitRate, meaning.kbps) << std::hex << bits;
        }
    }
}

TEST(FrameHeader, AllTwoMillionRecordsSayWhatTheFormulasSay) {
    FrameHeaderRecord record;
    for (std::uint32_t low = 0; low < kMeaningfulHeaders; ++low) {
        const std::uint32_t bits = kSync | low;
        const HeaderMeaning meaning = meaning_of(bits);
        record = record_of(bits);
        ASSERT_EQ(DecodeFrameHeader(record), meaning.valid) << std::hex << bits;
        if (!meaning.valid) {
            continue;
        }
        ASSERT_EQ(record.MpegVersion, meaning.version) << std::hex << bits;
        ASSERT_EQ(record.MpegLayer, meaning.layer) << std::hex << bits;
        ASSERT_EQ(record.Crc, meaning.crc_bytes) << std::hex << bits;
        ASSERT_EQ(record.BitRate, meaning.kbps) << std::hex << bits;
        ASSERT_EQ(record.SamplingFrequency, meaning.frequency) << std::hex << bits;
        ASSERT_EQ(record.Padding, meaning.padding) << std::hex << bits;
        ASSERT_EQ(record.ChannelMode, meaning.mode) << std::hex << bits;
        ASSERT_EQ(record.CopyRight, meaning.copyright) << std::hex << bits;
        ASSERT_EQ(record.Original, meaning.original) << std::hex << bits;
        ASSERT_EQ(record.Emphasis, meaning.emphasis) << std::hex << bits;
        ASSERT_EQ(record.FrameLength, meaning.length) << std::hex << bits;
    }
}

TEST(FrameHeader, EveryOneOfTheElevenSyncBitsIsNeeded) {
    const std::uint32_t valid = 0xFFFB'9064;
    ASSERT_TRUE(parse_frame_header(valid));
    for (unsigned bit = 21; bit < 32; ++bit) {
        const std::uint32_t broken = valid & ~(1U << bit);
        EXPECT_FALSE(parse_frame_header(broken)) << bit;
        EXPECT_FALSE(decode(broken).ok) << bit;
    }
}

TEST(FrameHeader, OrdinaryMpeg1Layer3HeaderIsDecoded) {
    const auto [ok, record] = decode(0xFFFB'9064);
    EXPECT_TRUE(ok);
    EXPECT_EQ(record.MpegVersion, 1);
    EXPECT_EQ(record.MpegLayer, 3);
    EXPECT_EQ(record.Crc, 0);
    EXPECT_EQ(record.BitRate, 128);
    EXPECT_EQ(record.SamplingFrequency, 44100);
    EXPECT_EQ(record.Padding, 0);
    EXPECT_EQ(record.ChannelMode, 1);
    EXPECT_EQ(record.CopyRight, 0);
    EXPECT_EQ(record.Original, 1);
    EXPECT_EQ(record.Emphasis, 0);
    EXPECT_EQ(record.FrameLength, 417);
    EXPECT_EQ(record.HeaderBits(), u"11111111111110111001000001100100");
}

TEST(FrameHeader, PaddingAddsOneByteAboveLayer1AndEightInLayer1) {
    EXPECT_EQ(parse_frame_header(0xFFFB'9264)->length, 418);
    // 128 kbit/s in Layer I is 128 x 12 / 44.1 = 34 slots of four bytes.
    const Frame layer1{.layer = 1, .kbps = 128};
    EXPECT_EQ(parse_frame_header(word(layer1.bits().bytes()))->length, 136);
    EXPECT_EQ(parse_frame_header(word(layer1.padded().bits().bytes()))->length, 144);
    EXPECT_EQ(decode(word(layer1.padded().bits().bytes())).record.Padding, 2);
}

TEST(FrameHeader, ClearedProtectionBitMeansTwoBytesOfCrc) {
    EXPECT_EQ(decode(0xFFFA'9064).record.Crc, 2);
}

TEST(FrameHeader, SlowestMpeg25FrameHas72Bytes) {
    const Frame slowest{.version = 25, .layer = 3, .kbps = 8, .frequency = 8000};
    const auto [ok, record] = decode(word(slowest.bits().bytes()));
    EXPECT_TRUE(ok);
    EXPECT_EQ(record.MpegVersion, 25);
    EXPECT_EQ(record.FrameLength, 72);
}

TEST(FrameHeader, ReservedValuesAreNoHeader) {
    struct Case {
        const char* what;
        HeaderBits bits;
    };
    const std::array<Case, 6> cases = {{
        {"bit rate 0, free format", {.bitrate = 0}},
        {"bit rate 15", {.bitrate = 15}},
        {"frequency 3", {.frequency = 3}},
        {"version 01", {.version = 1}},
        {"layer 00", {.layer = 0}},
        {"emphasis 10", {.emphasis = 2}},
    }};
    for (const Case& c : cases) {
        EXPECT_FALSE(parse_frame_header(word(c.bits.bytes()))) << c.what;
        EXPECT_FALSE(decode(word(c.bits.bytes())).ok) << c.what;
    }
}

TEST(FrameHeader, DecodingStopsAtTheFirstBrokenRule) {
    // The bit rate is reserved, so nothing after it is filled.
    const FrameHeaderRecord record = decode(word(HeaderBits{.bitrate = 15}.bytes())).record;
    EXPECT_EQ(record.MpegVersion, 1);
    EXPECT_EQ(record.MpegLayer, 3);
    EXPECT_EQ(record.SamplingFrequency, 0);
    EXPECT_EQ(record.ChannelMode, -1);
    EXPECT_EQ(record.Emphasis, 2);
    EXPECT_EQ(record.FrameLength, 0);
}

TEST(FrameHeader, EmptyRecordHasNoModeFlagsAndAnIllegalEmphasis) {
    const FrameHeaderRecord record;
    EXPECT_EQ(record.ChannelMode, -1);
    EXPECT_EQ(record.CopyRight, -1);
    EXPECT_EQ(record.Original, -1);
    EXPECT_EQ(record.Emphasis, 2);
    EXPECT_EQ(record.BitRate, 0);
    EXPECT_FALSE(record.VBR);
}

RC_GTEST_PROP(FrameHeader, HeadersAgreeWhenSevenFieldsAreEqual, ()) {
    const auto valid_header =
        rc::gen::suchThat(rc::gen::map(rc::gen::inRange<std::uint32_t>(0, kMeaningfulHeaders),
                                       [](std::uint32_t low) { return kSync | low; }),
                          [](std::uint32_t bits) { return meaning_of(bits).valid; });
    const std::uint32_t a_bits = *valid_header;
    // Most pairs of independent headers differ in much; few changed bits find the near misses.
    std::uint32_t b_bits = a_bits;
    for (const int bit : *rc::gen::container<std::vector<int>>(2, rc::gen::inRange(0, 21))) {
        b_bits ^= 1U << static_cast<unsigned>(bit);
    }
    const HeaderMeaning a = meaning_of(a_bits);
    const HeaderMeaning b = meaning_of(b_bits);
    RC_PRE(b.valid);
    const bool equal = a.frequency == b.frequency && a.version == b.version && a.mode == b.mode &&
                       a.emphasis == b.emphasis && a.layer == b.layer &&
                       a.copyright == b.copyright && a.original == b.original;
    RC_ASSERT(headers_agree(a_bits, b_bits) == equal);
}

TEST(FrameHeader, BitRatePaddingProtectionAndPrivateBitsMayChangeWithinAStream) {
    const HeaderBits base;
    for (const HeaderBits& other :
         {HeaderBits{.bitrate = 1}, HeaderBits{.padding = 1}, HeaderBits{.protection = 0},
          HeaderBits{.private_bit = 1}, HeaderBits{.extension = 3}}) {
        EXPECT_TRUE(headers_agree(word(base.bytes()), word(other.bytes())));
    }
}

}  // namespace
}  // namespace brindle::test
