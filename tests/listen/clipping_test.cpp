#include "listen/clipping.h"

#include <cstddef>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace brindle::test {
namespace {

using host::ClippedRuns;

std::vector<float> run(std::size_t length, float level = 1.0F) {
    std::vector<float> samples(20, 0.5F);
    for (std::size_t place = 5; place < 5 + length; ++place) {
        samples[place] = level;
    }
    return samples;
}

TEST(ClippedRuns, HaveEightSamplesOrMore) {
    for (const std::size_t length : {std::size_t{7}, std::size_t{8}, std::size_t{12}}) {
        ClippedRuns runs(1);
        runs.add(run(length), 100);
        EXPECT_EQ(runs.count(), length < 8 ? 0 : 1) << length;
        EXPECT_EQ(runs.places(),
                  length < 8 ? std::vector<std::int64_t>() : std::vector<std::int64_t>{105});
    }
}

TEST(ClippedRuns, AreAtOrAboveTheLargestSampleOf16Bits) {
    for (const float level : {32'767.0F / 32'768, -32'767.0F / 32'768, 1.5F, -1.0F}) {
        ClippedRuns runs(1);
        runs.add(run(8, level), 0);
        EXPECT_EQ(runs.count(), 1) << level;
    }
    ClippedRuns runs(1);
    runs.add(run(8, 32'766.0F / 32'768), 0);
    EXPECT_EQ(runs.count(), 0);
}

TEST(ClippedRuns, GoOnFromCallToCallUnlessThereIsUnclippedSoundBetween) {
    const std::vector<float> four(4, 1.0F);
    ClippedRuns runs(1);
    runs.add(four, 0);
    runs.add(four, 4);
    EXPECT_EQ(runs.places(), std::vector<std::int64_t>{0});
    runs.add_unclipped();
    runs.add(four, 20);
    runs.add_unclipped();
    runs.add(four, 40);
    EXPECT_EQ(runs.count(), 1);
}

// Left and right in turn: each has four.
TEST(ClippedRuns, AreThoseOfOneChannel) {
    const std::vector<float> both(8, 1.0F);
    ClippedRuns runs(2);
    runs.add(both, 0);
    EXPECT_EQ(runs.count(), 0);
    runs.add(both, 4);
    EXPECT_EQ(runs.places(), (std::vector<std::int64_t>{0, 0}));
}

TEST(ClippedRuns, PlacesAreTheFirstOnly) {
    ClippedRuns runs(1);
    for (std::int64_t times = 0; times < 20; ++times) {
        runs.add(run(8), 20 * times);
    }
    EXPECT_EQ(runs.count(), 20);
    EXPECT_EQ(runs.places().size(), ClippedRuns::kMaxPlaces);
}

}  // namespace
}  // namespace brindle::test
