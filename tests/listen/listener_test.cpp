// What is heard in samples whose sound is known: no coder has a part in it.
#include "listen/listener.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <ostream>
#include <span>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "listen/tones.h"

namespace brindle::test {
namespace {

using host::EndStyle;
using host::Listener;
using host::Listening;
using host::ListenOptions;
using host::MeterMode;
using host::StreamFormat;
using host::TimeRange;

StreamFormat format(std::int32_t frequency, int channels = 2) {
    return {.layer = 3,
            .is_mpeg1 = frequency >= 32'000,
            .is_protected = false,
            .channels = channels,
            .frequency = frequency,
            .samples_per_frame = frequency >= 32'000 ? 1'152 : 576};
}

constexpr std::int64_t kAnHour = 3'600'000;

void add(Listener& listener, const std::vector<float>& samples, std::size_t frame = 2'304) {
    for (std::size_t place = 0; place < samples.size(); place += frame) {
        listener.add(std::span(samples).subspan(place, std::min(frame, samples.size() - place)));
    }
}

Listening heard(const Stereo& sound, const ListenOptions& options = {}) {
    Listener listener(format(sound.frequency()), MeterMode::Quick, kAnHour);
    add(listener, sound.samples());
    return listener.conclude(options, std::nullopt);
}

// --- where sound is

class SoundAtRate : public ::testing::TestWithParam<std::int32_t> {};

TEST_P(SoundAtRate, IsFoundToTheMillisecond) {
    const Listening found = heard(Stereo(GetParam()).silence(1.2345).tone(2.3333, 0).silence(1));
    // 1,234.5 to 3,567.8 ms
    EXPECT_EQ(found.sound, (std::optional(TimeRange{1'234, 3'568})));
    EXPECT_TRUE(found.silences.empty());
    EXPECT_EQ(found.end, EndStyle::Cold);
    EXPECT_NEAR(static_cast<double>(found.next_start.value()), 3'567.8, 10);
}

INSTANTIATE_TEST_SUITE_P(All, SoundAtRate,
                         ::testing::Values(8'000, 11'025, 12'000, 16'000, 22'050, 24'000, 32'000,
                                           44'100, 48'000));

TEST(Listener, SoundMayFillEverything) {
    EXPECT_EQ(heard(Stereo().tone(3, -10)).sound, (std::optional(TimeRange{0, 3'000})));
}

// The tone of -20 dBFS is -20 LUFS; its threshold is at -60. White noise of -70 dB in both channels
// is weighted up by 3 LU, and both channels by 3 more.
TEST(Listener, NoiseFloorIsNoSound) {
    const Stereo floor = Stereo().noise(7, -70);
    const Listening found = heard(Stereo().silence(2).tone(3, -20).silence(2).under(floor));
    EXPECT_EQ(found.sound, (std::optional(TimeRange{2'000, 5'000})));
    const Stereo loud_floor = Stereo().noise(7, -58);
    EXPECT_EQ(heard(Stereo().silence(2).tone(3, -20).silence(2).under(loud_floor)).sound,
              (std::optional(TimeRange{0, 7'000})));
}

// Levels are weighted over 10 ms; edges are those of the samples.
TEST(Listener, EdgesAreSharpOverANoiseFloor) {
    const Stereo floor = Stereo().noise(7, -70);
    EXPECT_EQ(heard(Stereo().silence(2.0045).tone(3, -20).silence(1.9955).under(floor)).sound,
              (std::optional(TimeRange{2'004, 5'005})));
}

// At 12 Hz and -55 dBFS; the loudness filter reduces it by 24 dB.
TEST(Listener, RumbleIsNoSound) {
    const Stereo rumble = Stereo().tone(7, -55, 12);
    EXPECT_EQ(heard(Stereo().silence(2).tone(3, -20).silence(2).under(rumble)).sound,
              (std::optional(TimeRange{2'000, 5'000})));
}

TEST(Listener, RangeOfSoundIsAnOption) {
    const Stereo sound = Stereo().tone(2, -50).tone(3, -20).tone(2, -50);
    EXPECT_EQ(heard(sound).sound, (std::optional(TimeRange{0, 7'000})));
    EXPECT_EQ(heard(sound, {.sound_range = 20}).sound, (std::optional(TimeRange{2'000, 5'000})));
}

TEST(Listener, FadeInBeginsAtItsThreshold) {
    // In 4 s from nothing to -6 dBFS; 40 LU below the loudness of -6.4 is at 0.0048 of full scale.
    const Listening found = heard(Stereo().silence(1).fade(4, 0, 0.5).tone(20, -6.0206));
    EXPECT_NEAR(static_cast<double>(found.sound->begin), 1'000 + 4'000 * 0.0096, 10);
}

TEST(Listener, SilenceHasNoPoints) {
    const Listening found = heard(Stereo().silence(5));
    EXPECT_EQ(found.loudness, std::nullopt);
    EXPECT_EQ(found.sound, std::nullopt);
    EXPECT_EQ(found.next_start, std::nullopt);
    EXPECT_EQ(found.end, std::nullopt);
    EXPECT_TRUE(found.silences.empty());
}

TEST(Listener, NothingAtAllHasNoPoints) {
    Listener listener(format(44'100), MeterMode::Whole, kAnHour);
    EXPECT_EQ(listener.conclude({}, std::nullopt).sound, std::nullopt);
}

// A jingle of 0.2 s has no loudness by the book, and points nevertheless.
TEST(Listener, ShortSoundHasPoints) {
    const Listening found = heard(Stereo().silence(0.05).tone(0.2, -10).silence(0.05));
    EXPECT_EQ(found.loudness, std::nullopt);
    EXPECT_EQ(found.sound, (std::optional(TimeRange{50, 250})));
}

TEST(Listener, NoiseBelowTheGateIsNoSound) {
    EXPECT_EQ(heard(Stereo().noise(5, -90)).sound, std::nullopt);
}

// --- silences inside

TEST(Listener, SilencesAreLongerThanTheLimit) {
    const Stereo sound = Stereo().tone(3, -20).silence(1).tone(3, -20).silence(3).tone(3, -20);
    const std::pair<std::int64_t, std::int64_t> kCounts[] = {{500, 2}, {1'500, 1}, {3'500, 0}};
    for (const auto& [shortest, count] : kCounts) {
        EXPECT_EQ(heard(sound, {.shortest_silence = shortest}).silence_count, count) << shortest;
    }
}

TEST(Listener, SilencesInsideAreLongerThanTwoSeconds) {
    const Listening found = heard(Stereo()
                                      .silence(3)
                                      .tone(2, -20)
                                      .silence(1.9)
                                      .tone(2, -20)
                                      .silence(2.5)
                                      .tone(2, -20)
                                      .silence(3));
    EXPECT_EQ(found.silence_count, 1);
    ASSERT_EQ(found.silences.size(), 1U);
    EXPECT_NEAR(static_cast<double>(found.silences[0].begin), 8'900, 30);
    EXPECT_NEAR(static_cast<double>(found.silences[0].end), 11'400, 30);
}

TEST(Listener, LastWordsAfterMinutesOfSilenceAreTheEnd) {
    const Listening found =
        heard(Stereo(8'000).tone(60, -20).silence(300).tone(0.5, -30).silence(10));
    EXPECT_EQ(found.sound, (std::optional(TimeRange{0, 360'500})));
    EXPECT_EQ(found.silence_count, 1);
}

// --- the end

struct Ending {
    const char* name;
    Stereo sound;
    EndStyle style;
    double next_start;  // ms
};

void PrintTo(const Ending& ending, std::ostream* out) {
    *out << ending.name;
}

// Speech: words of 0.3 s and breaks, every fourth word 10 dB louder.
Stereo speech(double seconds) {
    Stereo sound(16'000);
    for (int word = 0; word * 0.4 < seconds; ++word) {
        sound.tone(0.3, word % 4 == 0 ? -15 : -25, 500).silence(0.1);
    }
    return sound;
}

// A chord that decays by 60 dB in this number of seconds.
Stereo decay(double seconds) {
    Stereo sound = Stereo(16'000).tone(20, -12);
    for (int step = 0; step < 300; ++step) {
        sound.tone(seconds / 300, -12 - step * 0.2);
    }
    return sound.silence(1);
}

// -12 LU of a linear fade are at 0.251 of the amplitude.
const Ending kEndings[] = {
    {"Cold", Stereo(16'000).tone(20, -12).silence(2), EndStyle::Cold, 20'000},
    {"ColdWithoutSilence", Stereo(16'000).tone(20, -12), EndStyle::Cold, 20'000},
    {"FadeOfTenSeconds", Stereo(16'000).tone(60, -6.02).fade(10, 0.5, 0), EndStyle::Fade,
     60'000 + 10'000 * 0.749},
    {"FadeOfFiveSeconds", Stereo(16'000).tone(60, -6.02).fade(5, 0.5, 0).silence(2), EndStyle::Fade,
     60'000 + 5'000 * 0.749},
    {"FadeOfThreeSeconds", Stereo(16'000).tone(60, -6.02).fade(3, 0.5, 0), EndStyle::Fade,
     60'000 + 3'000 * 0.749},
    {"Reverberation", decay(2), EndStyle::Cold, 20'000 + 2'000 * 0.2},
    {"LongReverberation", decay(4), EndStyle::Cold, 20'000 + 4'000 * 0.2},
    {"PianoChord", decay(12), EndStyle::Fade, 20'000 + 12'000 * 0.2},
    // 75 words; the last is soft, but not 12 LU below.
    {"Speech", speech(30), EndStyle::Cold, 29'900},
    // 8 dB below the loudest of the last twelve seconds.
    {"SofterLastWords", Stereo(16'000).tone(20, -12).tone(3, -20), EndStyle::Cold, 23'000},
    {"StepDown", Stereo(16'000).tone(20, -12).tone(0.3, -40), EndStyle::Cold, 20'000},
};

class EndOf : public ::testing::TestWithParam<Ending> {};

TEST_P(EndOf, IsColdOrFades) {
    EXPECT_EQ(heard(GetParam().sound).end, GetParam().style);
}

TEST_P(EndOf, NextStartsWhereTheLevelFallsForGood) {
    const Listening found = heard(GetParam().sound);
    EXPECT_NEAR(static_cast<double>(found.next_start.value()), GetParam().next_start, 100);
}

INSTANTIATE_TEST_SUITE_P(All, EndOf, ::testing::ValuesIn(kEndings),
                         [](const auto& ending) { return ending.param.name; });

TEST(Listener, RangeOfOverlapIsAnOption) {
    const Stereo sound = Stereo(16'000).tone(60, -6.02).fade(10, 0.5, 0);
    // 6 LU are at 0.501 of the amplitude, 20 at 0.1.
    EXPECT_NEAR(static_cast<double>(*heard(sound, {.overlap_range = 6}).next_start), 64'990, 150);
    EXPECT_NEAR(static_cast<double>(*heard(sound, {.overlap_range = 20}).next_start), 69'000, 150);
}

// --- channels and clipping

TEST(Listener, ChannelsAreCompared) {
    const auto balance = [](float left, float right) {
        Stereo sound = Stereo(16'000).tone(2, -10);
        for (std::size_t place = 0; place < sound.samples().size(); place += 2) {
            sound.samples()[place] *= left;
            sound.samples()[place + 1] *= right;
        }
        return heard(sound).balance.value();
    };
    EXPECT_NEAR(balance(1, 1).correlation, 1, 1e-3);
    EXPECT_NEAR(balance(1, -1).correlation, -1, 1e-3);
    EXPECT_NEAR(balance(1, -0.5).correlation, -1, 1e-3);
    EXPECT_EQ(balance(1, 0).correlation, 0);
    // A tone of -10 dBFS has a mean square of 0.05.
    EXPECT_NEAR(balance(1, 0).energy[0], 0.05, 1e-4);
    EXPECT_EQ(balance(1, 0).energy[1], 0);
    EXPECT_NEAR(balance(1, 0.5).energy[1], 0.0125, 1e-4);
}

TEST(Listener, OneChannelHasNoBalance) {
    Listener listener(format(16'000, 1), MeterMode::Quick, kAnHour);
    listener.add(std::vector<float>(16'000, 0.25F));
    EXPECT_FALSE(listener.conclude({}, std::nullopt).balance);
}

TEST(Listener, ClippedRunsAreReported) {
    Stereo sound = Stereo().tone(3, -10);
    for (const std::size_t second : {std::size_t{1}, std::size_t{2}}) {
        for (std::size_t place = 0; place < 10; ++place) {
            sound.samples()[2 * (48'000 * second + 24 + place)] = 1.0F;
        }
    }
    const Listening found = heard(sound);
    EXPECT_EQ(found.clipped_runs, 2);
    EXPECT_EQ(found.clipped_at, (std::vector<std::int64_t>{1'000, 2'000}));
}

// --- parts that are not decoded

TEST(Listener, SkippedSoundKeepsTheClockAndIsNoSilence) {
    Listener listener(format(48'000), MeterMode::Quick, kAnHour);
    add(listener, Stereo().silence(1).tone(5.0005, -20).samples());
    listener.skip(48'000 * 100 + 7);
    add(listener, Stereo().tone(5, -20).silence(1).samples());
    const Listening found = listener.conclude({}, std::nullopt);
    EXPECT_FALSE(found.is_whole);
    EXPECT_EQ(found.reference, host::Reference::Partial);
    EXPECT_EQ(found.sound->begin, 1'000);
    EXPECT_NEAR(static_cast<double>(found.sound->end), 111'001, 1);
    EXPECT_EQ(found.silence_count, 0);
    EXPECT_NEAR(static_cast<double>(*found.next_start), 111'000, 10);
}

TEST(Listener, ThresholdsMayComeFromOutside) {
    Listener listener(format(48'000), MeterMode::Quick, kAnHour);
    add(listener, Stereo().tone(2, -50).tone(3, -20).tone(2, -50).samples());
    const Listening found = listener.conclude({}, -5);
    EXPECT_EQ(found.reference, host::Reference::ReplayGain);
    EXPECT_EQ(found.loudness, -5);
    EXPECT_EQ(found.sound, (std::optional(TimeRange{2'000, 5'000})));
}

// Blocks and frames do not divide each other.
TEST(Listener, PiecesOfAnySizeAreHeardTheSame) {
    const Stereo sound =
        Stereo(44'100).silence(1.01).tone(3, -20).silence(2.5).tone(2, -10).fade(3, 0.3, 0);
    const Listening whole = heard(sound);
    for (const std::size_t piece :
         {std::size_t{2}, std::size_t{88}, std::size_t{1'152}, std::size_t{100'000}}) {
        Listener listener(format(44'100), MeterMode::Quick, kAnHour);
        add(listener, sound.samples(), piece);
        const Listening found = listener.conclude({}, std::nullopt);
        EXPECT_EQ(found.sound, whole.sound) << piece;
        EXPECT_EQ(found.silences, whole.silences) << piece;
        EXPECT_EQ(found.next_start, whole.next_start) << piece;
        EXPECT_EQ(found.end, whole.end) << piece;
        EXPECT_NEAR(*found.loudness, *whole.loudness, 1e-6) << piece;
    }
}

}  // namespace
}  // namespace brindle::test
