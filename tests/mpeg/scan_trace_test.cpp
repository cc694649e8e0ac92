// What a developer hears from the trace hook.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mpeg/analysis.h"
#include "mpeg/frame_trace.h"
#include "support/frames.h"

namespace brindle::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

std::uint32_t word(const HeaderBits& bits) {
    return header_bits(bits.bytes().data());
}

std::vector<std::string> texts_of(std::uint32_t first, std::uint32_t bits) {
    std::vector<std::string> texts;
    trace_rejected(first, bits, [&](std::string_view text) { texts.emplace_back(text); });
    return texts;
}

TEST(ScanTrace, NamesTheFirstRuleThatAHeaderBreaks) {
    struct Case {
        std::uint32_t bits;
        const char* text;
    };
    for (const Case& c : {
             Case{0x00FB'9064, "DecodeFrameHeader: first byte is NOT sync!"},
             Case{0xFFDB'9064, "DecodeFrameHeader: second byte is NOT sync!"},
             Case{word({.version = 1, .layer = 0}), "DecodeFrameHeader: MPEGVersion is illegal!"},
             Case{word({.layer = 0, .bitrate = 0}), "DecodeFrameHeader: MPEG Layer is illegal!"},
             Case{word({.bitrate = 15, .frequency = 3}), "DecodeFrameHeader: Bitrate is illegal!"},
             Case{word({.frequency = 3, .emphasis = 2}),
                  "DecodeFrameHeader: SampleRate is illegal!"},
             Case{word({.emphasis = 2}), "DecodeFrameHeader: Emphasis is illegal!"},
         }) {
        EXPECT_THAT(texts_of(word({}), c.bits), ElementsAre(c.text));
    }
}

TEST(ScanTrace, NamesTheFirstThingThatHeadersDoNotAgreeOn) {
    struct Case {
        HeaderBits bits;
        const char* text;
    };
    for (const Case& c : {
             Case{{.frequency = 1, .mode = 1}, "FrameHeadersAgree: NO AGREEMENT on SampleRate!"},
             // 24000 Hz: another version never has the same frequency.
             Case{{.version = 2}, "FrameHeadersAgree: NO AGREEMENT on SampleRate!"},
             Case{{.layer = 2, .mode = 1, .emphasis = 1},
                  "FrameHeadersAgree: NO AGREEMENT on CHANNELMODE!"},
             Case{{.layer = 2, .emphasis = 1}, "FrameHeadersAgree: NO AGREEMENT on EMPH!"},
             Case{{.layer = 2, .copyright = 1}, "FrameHeadersAgree: NO AGREEMENT on LAYER!"},
             Case{{.copyright = 1, .original = 1}, "FrameHeadersAgree: NO AGREEMENT on COPYRIGHT!"},
             Case{{.original = 1}, "FrameHeadersAgree: NO AGREEMENT on ORIGINAL!"},
         }) {
        EXPECT_THAT(texts_of(word({}), word(c.bits)), ElementsAre(c.text));
    }
}

TEST(ScanTrace, HeaderThatAgreesCanOnlyHaveBeenCut) {
    EXPECT_THAT(texts_of(word({}), word({.padding = 1})),
                ElementsAre("DECODE FRAME HEADER FAILED! "));
}

TEST(ScanTrace, GoodStreamHasNothingToTell) {
    Analysis file(stream(Frame{}, 120));
    file.traced().run();
    EXPECT_TRUE(file.found());
    EXPECT_TRUE(file.traces.empty());
}

TEST(ScanTrace, TellsEveryPositionThatIsTurnedDown) {
    Analysis file(zeros(3) + stream(Frame{}, 120));
    file.traced().run();
    EXPECT_EQ(file.count_of("DecodeFrameHeader: first byte is NOT sync!"), 3U);
}

TEST(ScanTrace, FileWithoutFramesIsNamed) {
    Analysis file(zeros(100));
    file.traced().run();
    EXPECT_THAT(file.traces, Contains("No consecutive valid frames found for::::song.mp3"));
}

TEST(ScanTrace, ChainThatMeetsTheFilesEndIsNamedWithItsPlace) {
    Analysis file(stream(Frame{}, 100));
    file.traced().run();
    EXPECT_EQ(file.count_of("FindConsec: bailed at offset: 41700"), 1U);
}

TEST(ScanTrace, ChangeOfBitRateIsNamed) {
    Bytes audio;
    for (int pair = 0; pair < 60; ++pair) {
        audio += Frame{}.bytes() + Frame{.kbps = 192}.bytes();
    }
    Analysis file(audio + zeros(10));
    file.traced().run();
    EXPECT_THAT(file.traces, ElementsAre("Possibly, song.mp3 is VBR!!!",
                                         "DecodeFrameHeader: first byte is NOT sync!"));
}

TEST(ScanTrace, FrameThatIsCutByTheFilesEndFailsToDecode) {
    Analysis file(Frame{}.bytes().first(400));
    file.traced().run();
    EXPECT_EQ(file.count_of("DECODE FRAME HEADER FAILED! "), 1U);
}

TEST(ScanTrace, SlowChainIsNamed) {
    Analysis file(stream(Frame{.kbps = 320}, 120));
    file.traced();
    file.world.clock.step = 2;
    file.run();
    EXPECT_THAT(
        file.traces,
        Contains(::testing::StartsWith("Doing events: Find Consecutive Frames taking ages: ")));
}

}  // namespace
}  // namespace brindle::test
