// What a scan of a library pays for each file: calls, bytes and allocations, counted.
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "facade/loaded_header.h"
#include "support/counting_allocator.h"
#include "support/every_property.h"
#include "support/temporary_folder.h"

namespace brindle {
namespace {

using test::Bytes;
using test::Frame;
using test::Tag;

constexpr std::size_t kTagArea = 4096;
constexpr std::size_t kFrame = 417;      // 128 kbit/s at 44,100 Hz
constexpr std::size_t kFrames = 12'000;  // 5 MB

// What a station writes: ten texts and fourteen scheduling fields.
Tag station_tag() {
    Tag tag(3);
    for (const char* id :
         {"TIT2", "TPE1", "TALB", "TYER", "TRCK", "TCON", "TCOM", "TPUB", "TCOP", "TENC"}) {
        tag.text(id, "Some text of a title");
    }
    for (const char* name :
         {"Agency", "Account Exec", "Copy", "End", "Category", "CatLevel", "NoFade", "Intro",
          "OutromSStart", "Sec Tone", "TarnSpeed", "Volume", "Opener", "Cue In"}) {
        tag.field(name, "12");
    }
    return tag;
}

struct Cost {
    std::uint64_t calls;
    std::uint64_t bytes;
    std::uint64_t allocations;
    std::uint64_t allocated_bytes;
};

// Of an object that reads the file and is asked for everything. Calls and bytes are counted by a
// disk in memory, allocations over a real one, which makes none of its own.
Cost cost_of(const Bytes& file) {
    test::LoadedHeader loaded(file);
    EXPECT_NE(test::read_every_property(loaded.header), 0U);
    const test::MemoryFiles& files = loaded.world.files;

    const test::TemporaryFolder folder;
    const String name = folder.put("song.mp3", file);
    const std::uint64_t allocations = test::allocations();
    const std::uint64_t allocated_bytes = test::allocated_bytes();
    {
        cMPEGHeader header;
        header.FileName(name);
        EXPECT_NE(test::read_every_property(header), 0U);
    }
    return {files.calls(), files.bytes_read(), test::allocations() - allocations,
            test::allocated_bytes() - allocated_bytes};
}

// Opening, length, three reads, closing; the real file's type is asked for in one call more.
TEST(OpeningCost, TaggedFileOfConstantRateIsReadInAFewCalls) {
    const Cost cost = cost_of(station_tag().padded_to(kTagArea) + test::stream(Frame{}, kFrames) +
                              test::Id3v1{}.bytes());
    EXPECT_LE(cost.calls, 6U);
    EXPECT_LE(cost.bytes, kTagArea + 101 * kFrame + 8'320);
    EXPECT_LE(cost.allocations, 60U);
}

TEST(OpeningCost, UnusedPictureIsReadOnceAndNeverConverted) {
    constexpr std::size_t kPicture = 60'000;
    Tag tag = station_tag();
    tag.picture("image/jpeg", 3, "", test::repeated(kPicture, 0x55)).padding(2'000);
    const Cost cost = cost_of(tag + test::stream(Frame{}, kFrames) + test::Id3v1{}.bytes());
    EXPECT_LE(cost.bytes, tag.length() + 101 * kFrame + 8'320);
    // Once in the window and once where it stays; wide text would be twice as much more.
    EXPECT_LE(cost.allocated_bytes, 4 * kPicture);
}

Cost cost_of_walk(int frames) {
    std::vector<int> rates;
    rates.reserve(static_cast<std::size_t>(frames));
    for (int frame = 0; frame < frames; ++frame) {
        rates.push_back(frame % 3 == 0 ? 128 : frame % 3 == 1 ? 160 : 320);
    }
    return cost_of(test::variable_stream(Frame{}, rates));
}

TEST(OpeningCost, WalkOverAllFramesAllocatesNothingForAFrame) {
    const Cost half = cost_of_walk(11'000);
    const Cost whole = cost_of_walk(22'000);
    EXPECT_EQ(whole.allocations, half.allocations);
}

}  // namespace
}  // namespace brindle
