// How much is read of a file. No file makes the analyser read it more than twice, however it was
// made; and the hostile ones here would not come to an end in the time of a test if their chains
// were walked again from each of their frames.

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "mpeg/analysis.h"
#include "support/frames.h"

namespace brindle::test {
namespace {

constexpr std::uint64_t kMegabyte = 1'000'000;
constexpr std::uint64_t kBlock = 65'536;

struct Cost {
    std::uint64_t calls;
    std::uint64_t bytes;
};

Cost cost_of(Analysis& file) {
    file.run();
    return {file.world.files.calls(FileCall::Read), file.world.files.bytes_read()};
}

TEST(ScanCost, ConstantStreamIsReadUpToItsHundredthFrameOnly) {
    Analysis file(zeros(3000) + stream(Frame{}, 12'000));
    file.tag(3000);
    const Cost cost = cost_of(file);
    EXPECT_TRUE(file.found());
    EXPECT_LE(cost.bytes, 101U * 417U + 8'192U);
    EXPECT_LE(cost.calls, 2U);
}

TEST(ScanCost, WalkReadsEveryByteOnce) {
    std::vector<int> rates;
    for (int frame = 0; frame < 22'969; ++frame) {  // ten minutes
        rates.push_back(frame % 3 == 0 ? 128 : frame % 3 == 1 ? 160 : 320);
    }
    const Bytes audio = variable_stream(Frame{}, rates);
    Analysis file(audio);
    const Cost cost = cost_of(file);
    EXPECT_EQ(file.analyser.FrameCounter(), 22'969);
    EXPECT_LE(cost.bytes, audio.size() + audio.size() / 100);
    EXPECT_LE(cost.calls, 16 + audio.size() / 60'000);
}

TEST(ScanCost, BytesOfSyncAreSearchedNoFartherThanTheLimit) {
    Analysis file(repeated(kMegabyte, 0xFF));
    const Cost cost = cost_of(file);
    EXPECT_FALSE(file.found());
    EXPECT_LE(cost.bytes, 16'384U + 8'192U);
}

TEST(ScanCost, EndlessSlowStreamIsReadTwiceAtMost) {
    const Frame slow{.version = 2, .layer = 3, .kbps = 8, .frequency = 24000};
    Bytes audio;
    for (std::uint64_t pair = 0; pair < 4 * kMegabyte / 72; ++pair) {
        audio += slow.bytes() + slow.with_kbps(16).bytes();
    }
    Analysis file(audio);
    const Cost cost = cost_of(file);
    EXPECT_TRUE(file.found());
    EXPECT_FALSE(file.analyser.VBR());
    EXPECT_LE(cost.bytes, 2 * audio.size() + kBlock);
    EXPECT_LE(cost.calls, 20 + 2 * audio.size() / 60'000);
}

// Each frame's body is full of headers whose chains all run to the end of the file.
TEST(ScanCost, ManyChainsThatMeetAreReadTwiceAtMost) {
    const Frame slow{.version = 2, .layer = 3, .kbps = 8, .frequency = 24000};
    Bytes audio = slow.with_kbps(16).bits().bytes();
    const Bytes header = slow.bits().bytes();
    while (audio.size() < 4 * kMegabyte) {
        audio += header;
    }
    Analysis file(audio);
    const Cost cost = cost_of(file);
    EXPECT_TRUE(file.found());
    EXPECT_LE(cost.bytes, 2 * audio.size() + kBlock);
    EXPECT_LE(cost.calls, 20 + 2 * audio.size() / 60'000);
}

// Chains of 99 frames that all break: none is enough, and each meets the ones before.
TEST(ScanCost, ChainsThatBreakJustBeforeTheyAreEnoughAreReadOnce) {
    const Frame slow{.version = 2, .layer = 3, .kbps = 8, .frequency = 24000};
    Bytes audio;
    while (audio.size() < kMegabyte) {
        for (int count = 0; count < 6 * 99; ++count) {
            audio += slow.bits().bytes();
        }
        audio += zeros(24);
    }
    Analysis file(audio);
    const Cost cost = cost_of(file);
    EXPECT_FALSE(file.found());
    EXPECT_LE(cost.bytes, 16'384U + 100U * 24U + 2 * 8'192U);
}

TEST(ScanCost, LastFramesOfALongFileAreFoundFromItsEndOnce) {
    // The first chain is too slow for its whole length but for the last frames.
    const Frame slow{.version = 2, .layer = 3, .kbps = 8, .frequency = 24000};
    const Bytes audio =
        slow.with_kbps(16).bytes() + stream(slow, 100'000) + stream(slow.with_kbps(24), 30);
    Analysis file(audio);
    const Cost cost = cost_of(file);
    // (8k + 720) / (k + 30) is above 20 for k of 9 and fewer.
    EXPECT_EQ(file.analyser.FrameCounter(), 39);
    EXPECT_LE(cost.bytes, 2 * audio.size() + kBlock);
}

// The kept header lifts the limit of positions, so the whole file is searched.
TEST(ScanCost, SearchOfAWholeFileIsReadOnceOrTwice) {
    Analysis file(stream(Frame{}, 120));
    file.run();
    ASSERT_TRUE(file.found());
    const Frame slow{.version = 2, .layer = 3, .kbps = 8, .frequency = 24000};
    Bytes audio;
    while (audio.size() < 2 * kMegabyte) {
        for (int count = 0; count < 6 * 99; ++count) {
            audio += slow.bits().bytes();
        }
        audio += zeros(24);
    }
    file.world.files.put(kName, audio + zeros(200));
    class Given : public ScannedFile {
    public:
        [[nodiscard]] String FileName() const override { return kName; }
        [[nodiscard]] std::int32_t Id3v2TagSize() const override { return 0; }
    };
    file.world.files.reset_counts();
    file.analyser.SetFileName(Given());
    EXPECT_FALSE(file.found());
    // It is searched twice: after the model's tag and after the analyser's.
    EXPECT_LE(file.world.files.bytes_read(), 2 * audio.size() + kBlock);
}

}  // namespace
}  // namespace brindle::test
