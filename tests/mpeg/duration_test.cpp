#include "mpeg/duration.h"

#include <gtest/gtest.h>

#include "mpeg/clsMPEG.h"
#include "support/raised_error.h"

namespace brindle::test {
namespace {

StreamState stream_of(std::int16_t version, std::int16_t layer, std::int32_t kbps,
                      std::int32_t frequency) {
    StreamState state;
    state.header.MpegVersion = version;
    state.header.MpegLayer = layer;
    state.header.BitRate = kbps;
    state.header.SamplingFrequency = frequency;
    return state;
}

StreamState variable_stream_of(std::int16_t version, std::int16_t layer, std::int32_t frequency,
                               std::int32_t frames) {
    StreamState state = stream_of(version, layer, 128, frequency);
    state.header.VBR = true;
    state.frame_counter = frames;
    return state;
}

TEST(Duration, ConstantStreamPlaysItsBitsAtItsRate) {
    StreamState state = stream_of(1, 3, 128, 44100);
    CalcDuration(state, 4'000'000);
    EXPECT_EQ(state.duration_ms, 250'000);
    EXPECT_EQ(state.average_bit_rate, 128);
}

TEST(Duration, HalfMillisecondsRoundToEven) {
    StreamState state = stream_of(1, 3, 128, 44100);
    CalcDuration(state, 8);  // 64 / 128
    EXPECT_EQ(state.duration_ms, 0);
    CalcDuration(state, 24);  // 192 / 128
    EXPECT_EQ(state.duration_ms, 2);
}

TEST(Duration, LargestFileDoesNotOverflowOnTheWay) {
    StreamState state = stream_of(2, 3, 8, 24000);
    CalcDuration(state, 2'147'483'647);  // a byte a millisecond
    EXPECT_EQ(state.duration_ms, 2'147'483'647);
}

TEST(Duration, WithoutABitRateIsUnknown) {
    StreamState state = stream_of(1, 3, 0, 44100);
    state.duration_ms = 5;
    CalcDuration(state, 1000);
    EXPECT_EQ(state.duration_ms, -1);
}

TEST(Duration, XingFramesDecide) {
    StreamState state = variable_stream_of(1, 3, 44100, 0);
    state.xing = {u"XING", 3, 1000, 400'000};
    CalcDuration(state, 400'000);
    EXPECT_EQ(state.frame_counter, 1000);
    EXPECT_EQ(state.duration_ms, 26'122);  // 1,152,000 / 44,100 = 26.1224
    // 400 bytes a frame x 38 frames a second x 8 = 121,600; / 1024 = 118.75
    EXPECT_EQ(state.average_bit_rate, 119);
}

TEST(Duration, SamplesOfAFrameDependOnVersionAndLayer) {
    struct Case {
        std::int16_t version;
        std::int16_t layer;
        std::int32_t frequency;
        std::int32_t duration_of_1000_frames;
    };
    for (const Case& c : {
             Case{1, 1, 48000, 8'000},   // 384
             Case{1, 2, 48000, 24'000},  // 1152
             Case{1, 3, 48000, 24'000},
             Case{2, 1, 24000, 16'000},  // 384
             Case{2, 2, 24000, 48'000},  // 1152
             Case{2, 3, 24000, 24'000},  // 576
             Case{25, 1, 12000, 32'000},
             Case{25, 2, 12000, 96'000},
             Case{25, 3, 12000, 48'000},
         }) {
        StreamState state = variable_stream_of(c.version, c.layer, c.frequency, 1000);
        CalcDuration(state, 0);
        EXPECT_EQ(state.duration_ms, c.duration_of_1000_frames) << c.version << ' ' << c.layer;
    }
}

// 12,345 / 1000 = 12.345 bytes; 12.345 x 38 x 8 = 3752.88; / 1024 = 3.66.
TEST(Duration, AverageRateCountsIn1024Bits) {
    StreamState state = variable_stream_of(1, 3, 44100, 1000);
    CalcDuration(state, 12'345);
    EXPECT_EQ(state.average_bit_rate, 4);
}

TEST(Duration, WithoutAudioBytesTheAverageStays) {
    StreamState state = variable_stream_of(1, 3, 44100, 1000);
    state.average_bit_rate = 77;
    CalcDuration(state, 0);
    EXPECT_EQ(state.average_bit_rate, 77);
    EXPECT_EQ(state.duration_ms, 26'122);
}

TEST(Duration, NoFramesToDivideByIsAnErrorWithTheDurationSet) {
    StreamState state = variable_stream_of(1, 3, 44100, 0);
    EXPECT_EQ(test::error_number([&] { CalcDuration(state, 1000); }), 11);
    EXPECT_EQ(state.duration_ms, 0);
}

TEST(Duration, MoreSamplesThan32BitsIsAnOverflow) {
    // 1152 x 1,864,135 = 2,147,483,520
    StreamState state = variable_stream_of(1, 3, 44100, 1'864'135);
    EXPECT_EQ(test::error_number([&] { CalcDuration(state, 0); }), 0);
    EXPECT_EQ(state.duration_ms, 48'695'771);  // 48,695.7714 s
    state = variable_stream_of(1, 3, 44100, 1'864'136);
    EXPECT_EQ(test::error_number([&] { CalcDuration(state, 0); }), 6);
}

TEST(SecsToTimeString, IsMinutesAndTwoDigitsOfSeconds) {
    struct Case {
        double seconds;
        String text;
        double rounded;
    };
    for (const Case& c : {
             Case{75.5, u"1:16", 76},
             Case{3600, u"60:00", 3600},
             Case{0, u"0:00", 0},
             Case{0.5, u"0:00", 0},  // halves to even
             Case{1.5, u"0:02", 2},
             Case{59.5, u"1:00", 60},
             Case{61, u"1:01", 61},
             Case{-75, u"-1:-15", -75},
             Case{-5, u"0:-5", -5},
         }) {
        double seconds = c.seconds;
        EXPECT_EQ(clsMPEG::SecsToTimeString(seconds), c.text) << c.seconds;
        EXPECT_EQ(seconds, c.rounded);
    }
}

}  // namespace
}  // namespace brindle::test
