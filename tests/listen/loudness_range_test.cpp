// The stereo signals of EBU Tech 3342 that can be made from their descriptions, with its tolerance
// of 1 LU; the others are authentic programmes. They pass through the meter, which weights them.
#include "listen/loudness_range.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <ostream>
#include <span>

#include <gtest/gtest.h>

#include "listen/loudness_meter.h"
#include "listen/loudness_units.h"
#include "listen/tones.h"

namespace brindle::test {
namespace {

using host::LoudnessMeter;
using host::LoudnessRange;
using host::MeterMode;

struct Programme {
    const char* name;
    Stereo sound;
    double range;
};

void PrintTo(const Programme& programme, std::ostream* out) {
    *out << programme.name;
}

const Programme kTech3342[] = {
    {"Case1", Stereo().tone(20, -20).tone(20, -30), 10},
    {"Case2", Stereo().tone(20, -20).tone(20, -15), 5},
    {"Case3", Stereo().tone(20, -40).tone(20, -20), 20},
    {"Case4", Stereo().tone(20, -50).tone(20, -35).tone(20, -20).tone(20, -35).tone(20, -50), 15},
};

class RangeOf : public ::testing::TestWithParam<Programme> {};

TEST_P(RangeOf, IsThatOfTech3342) {
    const auto& [name, sound, expected] = GetParam();
    LoudnessMeter meter(2, 48'000, MeterMode::Quick, 10'000);
    LoudnessRange range;
    constexpr std::size_t kBlock = 2 * 480;
    for (std::size_t place = 0; place < sound.samples().size(); place += kBlock) {
        meter.add(std::span(sound.samples()).subspan(place, kBlock));
        range.add(meter.latest_energy(LoudnessRange::kStep));
    }
    EXPECT_NEAR(range.range().value(), expected, 1);
}

INSTANTIATE_TEST_SUITE_P(Tech3342, RangeOf, ::testing::ValuesIn(kTech3342),
                         [](const auto& programme) { return programme.param.name; });

void add(LoudnessRange& range, double seconds, double loudness) {
    for (std::int64_t steps = std::llround(seconds * 100); steps > 0; --steps) {
        range.add(host::energy_of(loudness));
    }
}

TEST(LoudnessRange, NeedsThreeSecondsAboveTheGate) {
    LoudnessRange range;
    EXPECT_EQ(range.range(), std::nullopt);
    add(range, 2.9, -20);
    EXPECT_EQ(range.range(), std::nullopt);
    add(range, 0.2, -20);
    EXPECT_EQ(range.range(), 0);
    LoudnessRange soft;
    add(soft, 60, -71);
    EXPECT_EQ(soft.range(), std::nullopt);
}

// A tenth of the time at -30, half of a tenth at -10, the rest evenly between -30 and -10 in
// between.
TEST(LoudnessRange, IsFromTheTenthToTheNinetyFifthPercentile) {
    LoudnessRange range;
    for (int step = 0; step < 400; ++step) {
        add(range, 0.5, -30 + step * 0.05);
    }
    EXPECT_NEAR(range.range().value(), 19.7 * 0.85, 0.02);
}

// 20 LU below the mean of -20 and silence the relative gate leaves out what is at -45.
TEST(LoudnessRange, LeavesOutWhatIsFarBelowTheMean) {
    LoudnessRange range;
    add(range, 60, -45);
    add(range, 60, -20);
    EXPECT_NEAR(range.range().value(), 0, 1);
}

TEST(LoudnessRange, LevelsMayBeFarAboveFullScale) {
    LoudnessRange range;
    add(range, 10, 300);
    EXPECT_EQ(range.range(), 0);
}

}  // namespace
}  // namespace brindle::test
