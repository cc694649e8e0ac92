#include "mpeg/full_scan.h"

#include <cstdint>
#include <optional>

#include <gtest/gtest.h>

#include "mpeg/analysis.h"
#include "support/frames.h"

namespace brindle::test {
namespace {

std::optional<WalkedStream> walk(const Bytes& bytes, std::int32_t start) {
    MemoryEnvironment world;
    world.files.put(kName, bytes);
    const auto file = world.files.open(kName, OpenMode::Read);
    FileWindow window(*file);
    return FullScan(kName, window, world.clock, nullptr).run(start);
}

// 24 and 120 bytes, 8 and 40 kbit/s. No byte of their headers is 0, so none can be missing unseen.
Bytes pairs_of_short_frames(int pairs) {
    const Frame slow{.version = 2,
                     .layer = 3,
                     .kbps = 8,
                     .frequency = 24000,
                     .mode = Mode::JointStereo,
                     .original = true};
    Bytes bytes;
    for (int pair = 0; pair < pairs; ++pair) {
        bytes += slow.bytes() + slow.with_kbps(40).bytes();
    }
    return bytes;
}

TEST(FullScan, CountsTheFramesAndTheirBitRatesFromTheStart) {
    const auto stream = walk(pairs_of_short_frames(100), 0);
    ASSERT_TRUE(stream);
    EXPECT_EQ(stream->frames, 200);
    EXPECT_EQ(stream->bit_rate_sum, 4'800);
}

TEST(FullScan, EarliestChainMayStartOneByteAfterTheStart) {
    const auto stream = walk(zeros(1) + pairs_of_short_frames(100), 0);
    ASSERT_TRUE(stream);
    EXPECT_EQ(stream->frames, 200);
}

// 144 bytes a pair: the ends of blocks cut headers at every place.
TEST(FullScan, PassFromTheEndLosesNoFrameWhereBlocksMeet) {
    for (std::size_t after = 0; after < 24; ++after) {
        const auto stream = walk(zeros(1) + pairs_of_short_frames(3'000) + zeros(after), 0);
        ASSERT_TRUE(stream);
        EXPECT_EQ(stream->frames, 6'000) << after;
        EXPECT_EQ(stream->bit_rate_sum, 144'000) << after;
    }
}

TEST(FullScan, PassFromTheEndStepsOverWhatOnlyLooksLikeAHeader) {
    const Bytes no_sync{0xFF, 0x1F, 0x34, 0x44};
    const Bytes reserved_emphasis{0xFF, 0xF3, 0x14, 0x46};
    const Bytes reserved_rate{0xFF, 0xF3, 0xF4, 0x44};
    const Bytes longer_than_the_rest{0xFF, 0xF3, 0x94, 0x44};  // 80 kbit/s: 240 bytes
    const Bytes junk = no_sync + reserved_emphasis + reserved_rate + zeros(1);
    const auto stream = walk(junk + pairs_of_short_frames(100) + junk + longer_than_the_rest, 0);
    ASSERT_TRUE(stream);
    EXPECT_EQ(stream->frames, 200);
    EXPECT_EQ(stream->bit_rate_sum, 4'800);
}

TEST(FullScan, TenFramesAreTooFew) {
    EXPECT_FALSE(walk(pairs_of_short_frames(5), 0));
    EXPECT_FALSE(walk(zeros(1) + pairs_of_short_frames(5), 0));
    EXPECT_TRUE(walk(zeros(1) + pairs_of_short_frames(6), 0));
}

TEST(FullScan, NothingToWalkIsNoStream) {
    EXPECT_FALSE(walk({}, 0));
    EXPECT_FALSE(walk(zeros(3), 0));
    EXPECT_FALSE(walk(zeros(100), 100));
}

}  // namespace
}  // namespace brindle::test
