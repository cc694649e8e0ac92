#include "mpeg/block_walk.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "support/frames.h"

namespace brindle::test {
namespace {

constexpr std::size_t kFrame = 417;

struct Walked {
    WalkedStream stream;
    std::size_t offset;
    bool goes_on;
};

Walked walk(const Bytes& block, std::size_t offset, std::size_t left_of_file) {
    const FrameLengthTable<kStreamMask> frames(header_bits(block.data() + offset));
    Walked walked{{}, offset, false};
    walked.goes_on = walk_block(block, left_of_file, frames, walked.stream, walked.offset);
    return walked;
}

// All of them are long enough to be walked in several stretches, unless a test says otherwise.

TEST(BlockWalk, GoesThroughAllFrames) {
    const Bytes block = zeros(100) + stream(Frame{}, 240);
    const Walked walked = walk(block, 100, block.size());
    EXPECT_EQ(walked.stream.frames, 240);
    EXPECT_EQ(walked.stream.bit_rate_sum, 240 * 128);
    EXPECT_EQ(walked.offset, 100 + 240 * kFrame);
    EXPECT_TRUE(walked.goes_on);
}

TEST(BlockWalk, AddsEachFramesBitRate) {
    std::vector<int> rates;
    for (int pair = 0; pair < 120; ++pair) {
        rates.insert(rates.end(), {128, 160});
    }
    const Bytes block = variable_stream(Frame{}, rates);
    const Walked walked = walk(block, 0, block.size());
    EXPECT_EQ(walked.stream.frames, 240);
    EXPECT_EQ(walked.stream.bit_rate_sum, 120 * (128 + 160));
    EXPECT_TRUE(walked.goes_on);
}

TEST(BlockWalk, ShortBlockIsWalkedAsWell) {
    for (const int count : {1, 2, 3, 58, 59, 60}) {
        const Bytes block = stream(Frame{}, static_cast<std::size_t>(count));
        const Walked walked = walk(block, 0, block.size());
        EXPECT_EQ(walked.stream.frames, count);
        EXPECT_EQ(walked.offset, block.size());
        EXPECT_TRUE(walked.goes_on);
    }
}

TEST(BlockWalk, EndsWhereTheChainBreaks) {
    const Bytes whole = stream(Frame{}, 240);
    constexpr std::size_t kBroken[] = {1, 2, 79, 80, 81, 82, 120, 159, 160, 161, 162, 200, 239};
    for (const std::size_t broken : kBroken) {
        Bytes block = whole;
        block[broken * kFrame + 1] = 0;
        const Walked walked = walk(block, 0, block.size());
        EXPECT_EQ(walked.stream.frames, static_cast<int>(broken));
        EXPECT_EQ(walked.stream.bit_rate_sum, static_cast<int>(broken) * 128);
        EXPECT_EQ(walked.offset, broken * kFrame);
        EXPECT_FALSE(walked.goes_on);
    }
}

TEST(BlockWalk, FrameOfAReservedBitRateEndsIt) {
    constexpr std::uint8_t kReservedRate = 0xF0;
    constexpr std::uint8_t kPadded = 0x02;
    for (const std::uint8_t padding : {std::uint8_t{0}, kPadded}) {
        Bytes block = stream(Frame{}, 240);
        block[100 * kFrame + 2] |= kReservedRate | padding;
        const Walked walked = walk(block, 0, block.size());
        EXPECT_EQ(walked.stream.frames, 100);
        EXPECT_EQ(walked.offset, 100 * kFrame);
        EXPECT_FALSE(walked.goes_on);
    }
}

// The segments after the first find no frame to begin with.
TEST(BlockWalk, FramesThatEndInTheFirstSegmentAreAllCounted) {
    const Bytes block = stream(Frame{}, 100) + zeros(60'000);
    const Walked walked = walk(block, 0, block.size());
    EXPECT_EQ(walked.stream.frames, 100);
    EXPECT_EQ(walked.offset, 100 * kFrame);
    EXPECT_FALSE(walked.goes_on);
}

// Each frame holds a second header at the same place, so that these lead to each other as well.
TEST(BlockWalk, HeadersInsideTheAudioAreNotTakenForFrames) {
    const Bytes header = Frame{}.bits().bytes();
    for (std::size_t count = 200; count < 250; ++count) {
        Bytes block = stream(Frame{}, count);
        for (std::size_t frame = 0; frame < count; ++frame) {
            std::copy(header.begin(), header.end(),
                      block.begin() + static_cast<std::ptrdiff_t>(frame * kFrame + 200));
        }
        const Walked walked = walk(block, 0, block.size());
        EXPECT_EQ(walked.stream.frames, static_cast<int>(count));
        EXPECT_EQ(walked.stream.bit_rate_sum, static_cast<int>(count) * 128);
        EXPECT_EQ(walked.offset, block.size());
        EXPECT_TRUE(walked.goes_on);
    }
}

TEST(BlockWalk, FrameThatTheFileCutsIsNone) {
    const Bytes block = stream(Frame{}, 240);
    const Walked walked = walk(block, 0, block.size() - 1);
    EXPECT_EQ(walked.stream.frames, 239);
    EXPECT_EQ(walked.offset, 239 * kFrame);
    EXPECT_FALSE(walked.goes_on);
}

// The block ends this many bytes after the start of its last frame, which is complete in the file.
Walked walk_cut_block(std::size_t bytes_of_last_frame) {
    Bytes block = stream(Frame{}, 240);
    const std::size_t left = block.size();
    block.resize(239 * kFrame + bytes_of_last_frame);
    return walk(block, 0, left);
}

TEST(BlockWalk, LastFrameMayEndBeyondTheBlock) {
    const Walked walked = walk_cut_block(kHeaderBytes);
    EXPECT_EQ(walked.stream.frames, 240);
    EXPECT_EQ(walked.offset, 240 * kFrame);
    EXPECT_TRUE(walked.goes_on);
}

TEST(BlockWalk, HeaderCutByTheBlockIsReadInTheNextOne) {
    const Walked walked = walk_cut_block(kHeaderBytes - 1);
    EXPECT_EQ(walked.stream.frames, 239);
    EXPECT_EQ(walked.offset, 239 * kFrame);
    EXPECT_TRUE(walked.goes_on);
}

}  // namespace
}  // namespace brindle::test
