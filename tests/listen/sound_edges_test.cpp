// Where sound begins and ends at a threshold that is set afterwards. Levels are in LUFS.
#include "listen/sound_edges.h"

#include <cstdint>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "listen/loudness_units.h"

namespace brindle::test {
namespace {

using host::SoundEdges;
using host::TimeRange;

constexpr std::int64_t kSmear = 5;  // ms
constexpr double kSilent = -1'000;

// One level for each millisecond.
SoundEdges edges(const std::vector<double>& levels) {
    SoundEdges edges;
    std::int64_t millisecond = 0;
    for (const double level : levels) {
        edges.add(millisecond++, level == kSilent ? 0 : host::energy_of(level));
    }
    return edges;
}

using Found = std::optional<TimeRange>;

TEST(SoundEdges, AreTheFirstAndTheLastMillisecondAtTheThreshold) {
    const SoundEdges found = edges({-90, -60, -52, -50, -48, -50, -52, -60, -90});
    EXPECT_EQ(found.sound(-50.05, 0), Found(TimeRange{3, 6}));
    EXPECT_EQ(found.sound(-60.05, 0), Found(TimeRange{1, 8}));
    EXPECT_EQ(found.sound(-55, 0), Found(TimeRange{2, 7}));
    EXPECT_EQ(found.sound(-48.05, 0), Found(TimeRange{4, 5}));
    EXPECT_EQ(found.sound(-40, 0), std::nullopt);
}

TEST(SoundEdges, SoftPlacesInBetweenDoNotMatter) {
    EXPECT_EQ(edges({-10, kSilent, kSilent, -10}).sound(-50, kSmear), Found(TimeRange{0, 4}));
}

TEST(SoundEdges, ThereAreNoneOfNothing) {
    EXPECT_EQ(SoundEdges().sound(-50, kSmear), std::nullopt);
    EXPECT_EQ(edges({kSilent, kSilent}).sound(-1'000, kSmear), std::nullopt);
}

// Below the lowest level that is kept all are one.
TEST(SoundEdges, ThresholdMayBeLowerThanAnyLevel) {
    EXPECT_EQ(edges({kSilent, -140, kSilent}).sound(-500, kSmear), Found(TimeRange{1, 2}));
}

TEST(SoundEdges, LevelsMayBeFarAboveFullScale) {
    EXPECT_EQ(edges({kSilent, 300, kSilent}).sound(-40, kSmear), Found(TimeRange{1, 2}));
}

// --- what a coder spreads around a sound

TEST(SoundEdges, NoiseBeforeASteepRiseIsNoSound) {
    // At a distance of 4 ms it is the coder's, at 6 a sound of its own.
    EXPECT_EQ(edges({-45, -45, -45, -45, -10}).sound(-50, kSmear)->begin, 4);
    EXPECT_EQ(edges({-45, -45, -45, -45, -45, -45, -10}).sound(-50, kSmear)->begin, 0);
}

TEST(SoundEdges, RiseOfLessThanTwentyUnitsIsSound) {
    EXPECT_EQ(edges({-29, -29, -10}).sound(-50, kSmear)->begin, 0);
    EXPECT_EQ(edges({-31, -31, -10}).sound(-50, kSmear)->begin, 2);
    EXPECT_EQ(edges({-31, -25, -10}).sound(-50, kSmear)->begin, 1);
}

TEST(SoundEdges, NoiseAfterASteepFallIsNoSound) {
    EXPECT_EQ(edges({-10, -45, -45, -45}).sound(-50, kSmear)->end, 1);
    EXPECT_EQ(edges({-10, -45, -45, -45, -45, -45, -45, -45}).sound(-50, kSmear)->end, 8);
}

TEST(SoundEdges, FallOfLessThanTenUnitsIsSound) {
    EXPECT_EQ(edges({-10, -19, -19}).sound(-50, kSmear)->end, 3);
    EXPECT_EQ(edges({-10, -21, -21}).sound(-50, kSmear)->end, 1);
    EXPECT_EQ(edges({-10, -19, -21}).sound(-50, kSmear)->end, 2);
}

// Within a millisecond of each other a soft sound lies before the threshold already.
TEST(SoundEdges, SteepEdgeStaysAboveTheThreshold) {
    EXPECT_EQ(edges({-60, -45, -30, -45, -60}).sound(-50, kSmear), Found(TimeRange{1, 3}));
}

}  // namespace
}  // namespace brindle::test
