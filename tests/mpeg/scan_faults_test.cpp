// Files that cannot be read, as against files that hold no stream.

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/error.h>

#include "mpeg/analysis.h"
#include "support/counting_allocator.h"
#include "support/frames.h"
#include "support/read_only_file.h"

namespace brindle::test {
namespace {

std::vector<int> changing_rates(int pairs) {
    std::vector<int> rates;
    for (int pair = 0; pair < pairs; ++pair) {
        rates.push_back(128);
        rates.push_back(192);
    }
    return rates;
}

void expect_reset(const clsMPEG& analyser) {
    EXPECT_EQ(analyser.FileName(), u"");
    EXPECT_EQ(analyser.DurationmS(), -1);
    EXPECT_EQ(analyser.BitRate(), 0);
    EXPECT_FALSE(analyser.accepted_position());
}

TEST(ScanFaults, EachReadThatFailsInTheSearchEndsItAndIsKept) {
    const Bytes audio = stream(Frame{}, 300);
    Analysis healthy(audio);
    healthy.run();
    const std::uint64_t reads = healthy.world.files.calls(FileCall::Read);
    ASSERT_GT(reads, 0U);
    for (std::uint64_t nth = 1; nth <= reads; ++nth) {
        Analysis file(audio);
        file.world.files.fail({.nth = nth, .call = FileCall::Read});
        file.run();
        ASSERT_TRUE(file.world.files.has_failed());
        expect_reset(file.analyser);
        ASSERT_TRUE(file.analyser.read_fault());
        EXPECT_EQ(file.analyser.read_fault()->number(), 57);
        EXPECT_EQ(file.world.files.open_files(), 0U);
    }
}

TEST(ScanFaults, ReadThatFailsInTheWalkOverAllFramesLeavesTheStreamThatWasFound) {
    const Bytes audio = variable_stream(Frame{}, changing_rates(500));
    Analysis healthy(audio);
    healthy.run();
    const std::uint64_t reads = healthy.world.files.calls(FileCall::Read);
    Analysis file(audio);
    file.world.files.fail({.nth = reads, .call = FileCall::Read});
    file.run();
    ASSERT_TRUE(file.analyser.read_fault());
    EXPECT_EQ(file.analyser.read_fault()->number(), 57);
    EXPECT_TRUE(file.found());
    EXPECT_FALSE(file.analyser.VBR());
    EXPECT_EQ(file.analyser.BitRate(), 128'000);
    EXPECT_EQ(file.analyser.DurationmS(), 32'594);  // 521,500 x 8 / 128 = 32,593.75
}

TEST(ScanFaults, EachAllocationThatFailsIsKeptAsALackOfMemory) {
    const Bytes audio = stream(Frame{}, 300);
    bool failed = true;
    std::uint64_t nth = 1;
    for (; failed; ++nth) {
        ASSERT_LT(nth, 200U);
        Analysis file(audio);
        {
            const AllocationFault fault(nth);
            EXPECT_NO_THROW(file.run()) << nth;
            failed = fault.has_failed();
        }
        if (!failed) {
            EXPECT_TRUE(file.found());
            break;
        }
        expect_reset(file.analyser);
        ASSERT_TRUE(file.analyser.read_fault()) << nth;
        EXPECT_EQ(file.analyser.read_fault()->number(), 7) << nth;
    }
    EXPECT_GT(nth, 3U) << "nothing was allocated, so nothing was tested";
}

TEST(ScanFaults, MissingFileIsKeptAsItsError) {
    Analysis file{Bytes()};
    file.analyser.FileName(u"missing.mp3");
    expect_reset(file.analyser);
    ASSERT_TRUE(file.analyser.read_fault());
    EXPECT_EQ(file.analyser.read_fault()->number(), 53);
}

TEST(ScanFaults, NextGoodFileClearsTheFault) {
    Analysis file(stream(Frame{}, 120));
    file.analyser.FileName(u"missing.mp3");
    ASSERT_TRUE(file.analyser.read_fault());
    file.run();
    EXPECT_FALSE(file.analyser.read_fault());
    EXPECT_TRUE(file.found());
}

TEST(ScanFaults, FileThatIsCutMeanwhileIsNoFault) {
    const Bytes audio = variable_stream(Frame{}, changing_rates(500));
    for (std::uint64_t nth = 1; nth < 12; ++nth) {
        Analysis file(audio);
        file.world.files.fail({.nth = nth, .call = FileCall::Read, .kind = Fault::Kind::Shorten});
        file.run();
        EXPECT_FALSE(file.analyser.read_fault());
    }
}

// Of a length that no file in memory has; holds nothing but zeros.
class HugeFile final : public ReadOnlyFile {
public:
    explicit HugeFile(std::int64_t length) : length_(length) {}
    std::uint64_t reads = 0;

    std::int64_t length() override { return length_; }
    std::size_t read_at(std::int64_t, std::span<std::uint8_t> into) override {
        ++reads;
        std::fill(into.begin(), into.end(), std::uint8_t{0});
        return into.size();
    }

private:
    std::int64_t length_;
};

TEST(ScanFaults, FileAbove31BitsIsNotLookedAt) {
    MemoryEnvironment world;
    HugeFile file(2'147'483'648);
    FileWindow window(file);
    clsMPEG analyser(world.environment);
    analyser.analyse(kName, window);
    expect_reset(analyser);
    EXPECT_EQ(file.reads, 0U);
    EXPECT_FALSE(analyser.read_fault());
}

TEST(ScanFaults, LargestFileOf31BitsIsSearchedLikeAnyOther) {
    MemoryEnvironment world;
    HugeFile file(2'147'483'647);
    FileWindow window(file);
    clsMPEG analyser(world.environment);
    analyser.analyse(kName, window);
    expect_reset(analyser);
    EXPECT_GT(file.reads, 0U);
    EXPECT_LT(file.reads, 10U);
}

TEST(ScanFaults, TagPlacesOutOfRangeAreNoStream) {
    struct Case {
        std::int32_t length;
        std::int32_t offset;
    };
    for (const Case& c : {Case{2'147'483'647, 1}, Case{-5, 0}, Case{0, -1'000}}) {
        Analysis file(stream(Frame{}, 120));
        file.tag(c.length, c.offset).run();
        expect_reset(file.analyser);
        EXPECT_FALSE(file.analyser.read_fault());
    }
}

TEST(ScanFaults, OpenFileIsAnalysedWithoutOpeningItAgain) {
    Analysis file(stream(Frame{}, 120));
    const auto opened = file.world.files.open(kName, OpenMode::Read);
    FileWindow window(*opened);
    file.world.files.reset_counts();
    file.analyser.analyse(kName, window);
    EXPECT_TRUE(file.found());
    EXPECT_EQ(file.world.files.calls(FileCall::Open), 0U);
    EXPECT_EQ(file.world.files.calls(FileCall::Length), 0U);
}

}  // namespace
}  // namespace brindle::test
