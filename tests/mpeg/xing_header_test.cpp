#include "mpeg/xing_header.h"

#include <gtest/gtest.h>

#include "support/bytes.h"
#include "support/frames.h"

namespace brindle::test {
namespace {

const Frame kFrame;

// The data of a frame after its four header bytes.
Bytes data_of(const Xing& xing) {
    const Bytes frame = xing_frame(kFrame, xing);
    return frame.last(frame.size() - 4);
}

TEST(XingHeader, IsReadAtEachOfItsThreeOffsetsInAnyFrame) {
    for (const std::size_t offset : {kXingStereo1, kXingMono1, kXingMono2}) {
        const XingRecord record =
            ReadXing(data_of({.frames = 1234, .bytes = 567890, .offset = offset}));
        EXPECT_EQ(record.Tag, u"XING") << offset;
        EXPECT_EQ(record.Flags, 3);
        EXPECT_EQ(record.Frames, 1234);
        EXPECT_EQ(record.Bytes, 567890);
    }
}

TEST(XingHeader, ElsewhereIsNone) {
    for (const std::size_t offset : {4U, 12U, 14U, 20U, 22U, 35U, 37U, 100U}) {
        EXPECT_EQ(ReadXing(data_of({.frames = 1, .bytes = 1, .offset = offset})).Tag, u"")
            << offset;
    }
}

TEST(XingHeader, LettersMayHaveAnyCase) {
    for (const char* letters : {"XING", "Xing", "xing", "xInG"}) {
        EXPECT_EQ(ReadXing(data_of({.frames = 1, .bytes = 1, .letters = letters})).Tag, u"XING");
    }
    EXPECT_EQ(ReadXing(data_of({.frames = 1, .bytes = 1, .letters = "Info"})).Tag, u"");
}

TEST(XingHeader, OnlyTheFirstOccurrenceOfTheLettersCounts) {
    Bytes data = data_of({.frames = 1, .bytes = 1, .offset = kXingStereo1});
    const Bytes letters("xing");
    std::copy(letters.begin(), letters.end(), data.begin() + 3);
    EXPECT_EQ(ReadXing(data).Tag, u"");
}

TEST(XingHeader, BothCountsMustBeAnnounced) {
    for (const std::uint32_t flags : {0U, 1U, 2U, 4U, 12U}) {
        EXPECT_EQ(ReadXing(data_of({.frames = 1, .bytes = 1, .flags = flags})).Tag, u"") << flags;
    }
    for (const std::uint32_t flags : {3U, 7U, 15U}) {
        EXPECT_EQ(ReadXing(data_of({.frames = 1, .bytes = 1, .flags = flags})).Tag, u"XING")
            << flags;
    }
}

TEST(XingHeader, NumbersAbove31BitsMakeItUnusable) {
    EXPECT_EQ(ReadXing(data_of({.frames = 2147483647, .bytes = 2147483647})).Frames, 2147483647);
    EXPECT_EQ(ReadXing(data_of({.frames = 2147483648, .bytes = 1})).Tag, u"");
    EXPECT_EQ(ReadXing(data_of({.frames = 1, .bytes = 2147483648})).Tag, u"");
    EXPECT_EQ(ReadXing(data_of({.frames = 1, .bytes = 1, .flags = 0x80000003})).Tag, u"");
}

TEST(XingHeader, CutOffByTheEndOfItsFrameItIsNone) {
    const Bytes data = data_of({.frames = 1, .bytes = 1, .offset = kXingMono2});
    // Nine bytes of other data, the letters, three words.
    EXPECT_EQ(ReadXing(data.first(9 + 4 + 12)).Tag, u"XING");
    for (std::size_t size = 0; size < 9 + 4 + 12; ++size) {
        EXPECT_EQ(ReadXing(data.first(size)).Tag, u"") << size;
    }
}

}  // namespace
}  // namespace brindle::test
