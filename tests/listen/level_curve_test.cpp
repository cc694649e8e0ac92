// The curve of levels: one value for each 10 ms, asked for what it says when the threshold is
// known.
#include "listen/level_curve.h"

#include <cstdint>
#include <optional>

#include <gtest/gtest.h>

namespace brindle::test {
namespace {

using host::LevelCurve;
using host::TimeRange;

constexpr double kLoud = 1;
constexpr double kSoft = 0.01;

void add(LevelCurve& curve, std::int64_t milliseconds, double energy) {
    for (; milliseconds > 0; milliseconds -= LevelCurve::kFinestStep) {
        curve.add(energy);
    }
}

TEST(LevelCurve, MeanIsOfWhatWasHeard) {
    LevelCurve curve;
    EXPECT_EQ(curve.mean(), 0);
    add(curve, 100, 1);
    curve.skip(1'000);
    add(curve, 300, 2);
    EXPECT_DOUBLE_EQ(curve.mean(), 1.75);
}

// --- where the level falls for good

TEST(LastFall, OfSoundThatStopsIsItsEnd) {
    LevelCurve curve;
    add(curve, 2'000, kLoud);
    add(curve, 3'000, kSoft);
    EXPECT_EQ(curve.last_fall(0.5), 2'000);
    EXPECT_EQ(curve.last_fall(0.02), 2'000);
    EXPECT_EQ(curve.last_fall(kSoft / 2), 5'000);
    EXPECT_EQ(curve.last_fall(2), std::nullopt);
}

TEST(LastFall, IsTheLastOne) {
    LevelCurve curve;
    add(curve, 2'000, kLoud);
    add(curve, 60'000, kSoft);
    add(curve, 1'000, kLoud);
    add(curve, 1'000, kSoft);
    EXPECT_EQ(curve.last_fall(0.5), 63'000);
}

// 400 ms with one of 10 ms at 1 have a mean of 0.025.
TEST(LastFall, NeedsAMeanAndNotAPeak) {
    LevelCurve curve;
    add(curve, 2'000, kLoud);
    add(curve, 2'000, 0);
    add(curve, 10, kLoud);
    add(curve, 2'000, 0);
    EXPECT_EQ(curve.last_fall(0.026), 2'000);
    EXPECT_EQ(curve.last_fall(0.024), 4'010);
}

TEST(LastFall, OfShortSoundIsOverAllOfIt) {
    LevelCurve curve;
    EXPECT_EQ(curve.last_fall(0.1), std::nullopt);
    add(curve, 50, kLoud);
    add(curve, 50, 0);
    EXPECT_EQ(curve.last_fall(0.4), 50);
    EXPECT_EQ(curve.last_fall(0.6), std::nullopt);
}

TEST(LastFall, IsUnknownInPartsThatWereNotDecoded) {
    LevelCurve curve;
    add(curve, 1'000, kLoud);
    curve.skip(1'000);
    add(curve, 1'000, kSoft);
    EXPECT_EQ(curve.last_fall(0.5), std::nullopt);
    EXPECT_EQ(curve.last_fall(kSoft / 2), 12'000);
}

// --- the loudest

TEST(Loudest, IsAMeanOver400Milliseconds) {
    LevelCurve curve;
    add(curve, 1'000, kSoft);
    add(curve, 200, kLoud);
    add(curve, 1'000, kSoft);
    EXPECT_NEAR(curve.loudest({0, 2'200}), (kLoud + kSoft) / 2, 1e-6);
    EXPECT_NEAR(curve.loudest({1'100, 2'200}), (kLoud + 3 * kSoft) / 4, 1e-6);
    EXPECT_NEAR(curve.loudest({-5'000, 1'000}), kSoft, 1e-6);
    EXPECT_EQ(curve.loudest({0, 390}), 0);
}

TEST(Loudest, SkipsPartsThatWereNotDecoded) {
    LevelCurve curve;
    add(curve, 500, kSoft);
    curve.skip(100);
    add(curve, 500, kLoud);
    EXPECT_NEAR(curve.loudest({0, 2'000}), kLoud, 1e-6);
}

// --- silences

using Stretches = std::vector<TimeRange>;

TEST(Quiet, IsLongerThanTheShortest) {
    LevelCurve curve;
    add(curve, 1'000, kLoud);
    add(curve, 2'000, 0);
    add(curve, 1'000, kLoud);
    add(curve, 2'010, 0);
    add(curve, 1'000, kLoud);
    const auto quiet = curve.quiet(kSoft, {0, 7'010}, 2'000, 9);
    EXPECT_EQ(quiet.ranges, (Stretches{{4'000, 6'010}}));
    EXPECT_EQ(quiet.count, 1);
}

TEST(Quiet, IsInsideOnly) {
    LevelCurve curve;
    add(curve, 5'000, 0);
    add(curve, 1'000, kLoud);
    add(curve, 5'000, 0);
    EXPECT_TRUE(curve.quiet(kSoft, {5'000, 6'000}, 2'000, 9).ranges.empty());
    EXPECT_EQ(curve.quiet(kSoft, {0, 11'000}, 2'000, 9).ranges,
              (Stretches{{0, 5'000}, {6'000, 11'000}}));
}

TEST(Quiet, IsNotInPartsThatWereNotDecoded) {
    LevelCurve curve;
    add(curve, 1'500, 0);
    curve.skip(1'000);
    add(curve, 1'500, 0);
    EXPECT_EQ(curve.quiet(kSoft, {0, 13'000}, 2'000, 9).count, 0);
    EXPECT_EQ(curve.quiet(kSoft, {0, 13'000}, 1'000, 9).ranges,
              (Stretches{{0, 1'500}, {11'500, 13'000}}));
}

TEST(Quiet, ListIsBoundedAndTheCountIsNot) {
    LevelCurve curve;
    for (int times = 0; times < 5; ++times) {
        add(curve, 3'000, 0);
        add(curve, 10, kLoud);
    }
    const auto quiet = curve.quiet(kSoft, {0, 15'050}, 2'000, 3);
    EXPECT_EQ(quiet.ranges.size(), 3U);
    EXPECT_EQ(quiet.count, 5);
}

// --- more than fits

// Two hours of sound and silence after two of sound: three hours take the finest step, so now a
// value covers 20 ms.
TEST(LongCurve, IsCoarserAndSaysTheSame) {
    constexpr std::int64_t kTwoHours = 7'200'000;
    LevelCurve curve;
    add(curve, kTwoHours, kLoud);
    add(curve, 1'800'000, 0);
    add(curve, kTwoHours - 1'800'000, kLoud);
    add(curve, 10'000, kSoft);
    EXPECT_EQ(curve.last_fall(0.5), 2 * kTwoHours);
    EXPECT_EQ(curve.quiet(kSoft / 2, {0, 2 * kTwoHours}, 2'000, 9).ranges,
              (Stretches{{kTwoHours, kTwoHours + 1'800'000}}));
    EXPECT_NEAR(curve.loudest({kTwoHours - 12'000, kTwoHours}), kLoud, 1e-6);
    EXPECT_NEAR(curve.mean(), 0.875, 0.001);
}

}  // namespace
}  // namespace brindle::test
