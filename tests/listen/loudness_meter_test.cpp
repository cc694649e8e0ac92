// The stereo signals of EBU Tech 3341 that can be made from their descriptions, with the tolerances
// of the document: 0.1 LU, +0.2 and -0.4 dB of true peak. Left out
// are those of five channels, authentic programmes, live meters, and the peaks of cases 20 to 23,
// whose samples are given as files only.
#include "listen/loudness_meter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <ostream>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "listen/loudness_units.h"
#include "listen/tones.h"

namespace brindle::test {
namespace {

using host::LoudnessMeter;
using host::MeterMode;

LoudnessMeter measured(const std::vector<float>& samples, int channels = 2,
                       std::int32_t frequency = 48'000, MeterMode mode = MeterMode::Whole,
                       std::int64_t most_blocks = 10'000) {
    LoudnessMeter meter(channels, frequency, mode, most_blocks);
    // As the decoder hands them over.
    const std::size_t frame = std::size_t{1152} * static_cast<std::size_t>(channels);
    for (std::size_t place = 0; place < samples.size(); place += frame) {
        meter.add(std::span(samples).subspan(place, std::min(frame, samples.size() - place)));
    }
    return meter;
}

struct Programme {
    const char* name;
    Stereo sound;
    double loudness;
};

void PrintTo(const Programme& programme, std::ostream* out) {
    *out << programme.name;
}

const Programme kTech3341[] = {
    {"Case1", Stereo().tone(20, -23), -23},
    {"Case2", Stereo().tone(20, -33), -33},
    {"Case3", Stereo().tone(10, -36).tone(60, -23).tone(10, -36), -23},
    {"Case4", Stereo().tone(10, -72).tone(10, -36).tone(60, -23).tone(10, -36).tone(10, -72), -23},
    {"Case5", Stereo().tone(20, -26).tone(20.1, -20).tone(20, -26), -23},
};

class IntegratedLoudness : public ::testing::TestWithParam<Programme> {};

TEST_P(IntegratedLoudness, IsThatOfTech3341) {
    const auto& [name, sound, loudness] = GetParam();
    EXPECT_NEAR(measured(sound.samples()).integrated().value(), loudness, 0.1);
}

TEST_P(IntegratedLoudness, IsTheSameWhenLevelsAreCountedOrTimeIsShort) {
    const auto& [name, sound, loudness] = GetParam();
    constexpr std::int64_t kVeryLong = host::kMaxExactBlocks + 1;
    const auto counted = measured(sound.samples(), 2, 48'000, MeterMode::Whole, kVeryLong);
    EXPECT_NEAR(counted.integrated().value(), loudness, 0.1);
    const auto quick = measured(sound.samples(), 2, 48'000, MeterMode::Quick);
    EXPECT_NEAR(quick.integrated().value(), loudness, 0.1);
    EXPECT_FALSE(quick.true_peak());
}

INSTANTIATE_TEST_SUITE_P(Tech3341, IntegratedLoudness, ::testing::ValuesIn(kTech3341),
                         [](const auto& programme) { return programme.param.name; });

// Cases 9 and 12: alternating levels that every window of 3 s and of 400 ms is to see the same.
TEST(LatestEnergy, OfAlternatingLevelsIsThatOfTech3341) {
    Stereo sound;
    for (int times = 0; times < 25; ++times) {
        sound.tone(0.18, -20).tone(0.22, -30);
    }
    LoudnessMeter meter(2, 48'000, MeterMode::Quick, 10'000);
    constexpr std::size_t kBlock = 2 * 480;
    for (std::size_t place = 0; place < sound.samples().size(); place += kBlock) {
        meter.add(std::span(sound.samples()).subspan(place, kBlock));
        if (place >= 40 * kBlock) {
            EXPECT_NEAR(host::loudness_of(meter.latest_energy(400)), -23, 0.1);
        }
    }
}

// --- true peak

// A tone of a fraction of the sampling frequency, from a phase on. It comes and goes in a tenth of
// a second: a tone that breaks off has higher peaks of its own.
Stereo peaks(double amplitude, double fraction, double degrees) {
    constexpr int kLength = 48'000;
    constexpr int kRamp = 4'800;
    Stereo sound;
    for (int place = 0; place < kLength; ++place) {
        const double ramp = std::min({place, kLength - place, kRamp}) / double{kRamp};
        sound.put(
            amplitude * ramp *
            std::sin(2 * std::numbers::pi * place / fraction + degrees * std::numbers::pi / 180));
    }
    return sound;
}

struct Peak {
    const char* name;
    double amplitude;
    double fraction;
    double degrees;
    double dbtp;
};

void PrintTo(const Peak& peak, std::ostream* out) {
    *out << peak.name;
}

const Peak kPeaks[] = {
    {"Case15", 0.5, 4, 0, -6},    {"Case16", 0.5, 4, 45, -6}, {"Case17", 0.5, 6, 60, -6},
    {"Case18", 0.5, 8, 67.5, -6}, {"Case19", 1.41, 4, 45, 3},
};

class TruePeak : public ::testing::TestWithParam<Peak> {};

TEST_P(TruePeak, IsThatOfTech3341) {
    const Peak& peak = GetParam();
    const auto meter = measured(peaks(peak.amplitude, peak.fraction, peak.degrees).samples());
    EXPECT_LE(meter.true_peak().value(), peak.dbtp + 0.2);
    EXPECT_GE(meter.true_peak().value(), peak.dbtp - 0.4);
}

INSTANTIATE_TEST_SUITE_P(Tech3341, TruePeak, ::testing::ValuesIn(kPeaks),
                         [](const auto& peak) { return peak.param.name; });

TEST(Peaks, AreThoseOfAllChannels) {
    Stereo sound = Stereo().tone(1, -20);
    sound.samples()[20'000] = -0.75F;
    sound.samples()[20'001] = 0.5F;
    EXPECT_EQ(measured(sound.samples()).sample_peak(), 0.75);
    sound.samples()[20'003] = 0.875F;
    EXPECT_EQ(measured(sound.samples()).sample_peak(), 0.875);
}

TEST(Peaks, LatestIsOfTheLatestSamples) {
    LoudnessMeter meter(2, 48'000, MeterMode::Whole, 10'000);
    meter.add(std::vector<float>{0.25F, -0.5F, 0.25F, 0.25F});
    EXPECT_EQ(meter.latest_peak(), 0.5);
    meter.add(std::vector<float>{0.125F, 0.0F});
    EXPECT_EQ(meter.latest_peak(), 0.125);
}

// --- what has no loudness

TEST(LoudnessMeter, OneChannelIsThreeUnitsSofterThanTwo) {
    std::vector<float> mono;
    const Stereo sound = Stereo().tone(20, -23);
    for (std::size_t place = 0; place < sound.samples().size(); place += 2) {
        mono.push_back(sound.samples()[place]);
    }
    EXPECT_NEAR(measured(mono, 1).integrated().value(), -26.01, 0.1);
}

TEST(LoudnessMeter, SilenceAndShortSoundsHaveNone) {
    const auto silent = measured(Stereo().silence(2).samples());
    EXPECT_FALSE(silent.integrated());
    EXPECT_FALSE(silent.true_peak());
    EXPECT_EQ(silent.sample_peak(), 0);
    EXPECT_FALSE(measured(Stereo().tone(0.3, -10).samples()).integrated());
    EXPECT_FALSE(measured(Stereo().tone(2, -75).samples()).integrated());
    EXPECT_TRUE(measured(Stereo().tone(2, -65).samples()).integrated());
}

}  // namespace
}  // namespace brindle::test
