// What opening may cost at most, whatever the file: the bounds of docs/limits.md, for each file
// that is known to be hard on a reader.
#include <algorithm>
#include <cstdint>

#include <gtest/gtest.h>

#include "facade/known_inputs.h"
#include "facade/loaded_header.h"
#include "support/counting_allocator.h"
#include "support/temporary_folder.h"

namespace brindle {
namespace {

using namespace std::string_view_literals;
using test::AttackFile;
using test::Bytes;
using test::Tag;

constexpr std::uint64_t kMebibyte = 1'048'576;

struct Held {
    std::uint64_t frames = 0;
    std::uint64_t bytes = 0;  // of their values, each once
};

// As a host can see it: a value has one character for each byte.
Held held_by(const cMPEGHeader& header) {
    Held held;
    const auto ids = header.v2Frames();
    for (std::int32_t place = 1; place <= ids->Count(); ++place) {
        const String id = std::get<String>(ids->Item(place));
        const std::int32_t values = header.TagsInFrame(id);
        for (std::int32_t number = 1; number <= values; ++number) {
            ++held.frames;
            held.bytes += header.v2Tag(id, number).size();
        }
    }
    return held;
}

struct HeapUse {
    std::uint64_t opening;
    std::uint64_t asking;  // opening it and asking for each frame
    Held held;
};

// On a real disk, which takes no heap of its own.
HeapUse heap_use(const AttackFile& input) {
    const test::TemporaryFolder folder;
    const String name = folder.put("song.mp3", input.file);
    cMPEGHeader header;
    const test::HeapPeak peak;
    header.FileName(name);
    const std::uint64_t opening = peak.bytes();
    const Held held = held_by(header);
    return {opening, peak.bytes(), held};
}

void expect_bounded_heap(const AttackFile& input) {
    SCOPED_TRACE(input.name);
    const HeapUse use = heap_use(input);
    EXPECT_LE(use.opening, kMebibyte + 64 * use.held.frames + use.held.bytes);
    EXPECT_LE(use.asking, kMebibyte + 128 * use.held.frames + use.held.bytes);
}

TEST(OpeningLimits, EachByteIsReadTwiceAtMost) {
    const auto& inputs = test::known_inputs();
    EXPECT_GT(inputs.size(), 1'500U) << "the kept inputs are missing";
    for (const AttackFile& input : inputs) {
        SCOPED_TRACE(input.name);
        const test::LoadedHeader loaded(input.file);
        EXPECT_LE(loaded.world.files.bytes_read(), 2 * input.file.size());
    }
}

// Both tags come after the bytes that are searched for them, and the audio before both: the search,
// the second tag and the audio go over the same bytes.
TEST(OpeningLimits, SecondTagInFrontOfTheFirstIsReadAThirdTime) {
    constexpr std::size_t kSecondTag = 400'000;
    Bytes file = test::rejected_stream(5'500);
    // A block with an unknown version is not searched further.
    file += test::zeros(kSecondTag - 10 - file.size()) + "ID3\xFF" + test::zeros(6);
    file += Tag(3).frame("AAAA", Bytes("\0a"sv)).padding(500'000).bytes();
    file += Tag(3).text("TIT2", "Song").size(kSecondTag - 10).bytes() + test::zeros(5'000);
    const test::LoadedHeader loaded(file);
    EXPECT_EQ(loaded.header.TagsInFrame(u"AAAA"), 1) << "the second one was read";
    EXPECT_LE(loaded.world.files.bytes_read(), 3 * file.size());
}

TEST(OpeningLimits, HeapIsAMebibyteAnd64BytesForAFrame) {
    for (const AttackFile& input : test::known_inputs()) {
        expect_bounded_heap(input);
    }
}

// A broken short file costs no tables for a long one: half a megabyte to be cleared, more than all
// the rest. What remains is a ring over the longest frame, on the way back from the file's end.
TEST(OpeningLimits, ShortFileTakesLittleHeap) {
    constexpr std::uint64_t kRing = 65'536;
    constexpr std::uint64_t kObject = 8'192;
    for (const std::size_t pairs : {1U, 5U, 20U, 100U}) {
        const AttackFile input{std::to_string(pairs) + " pairs", test::rejected_stream(pairs)};
        SCOPED_TRACE(input.name);
        EXPECT_LE(heap_use(input).opening, kRing + kObject + 4 * input.file.size());
    }
}

// Of each block that a third value no longer fits into, nearly half.
TEST(OpeningLimits, FramesThatFitBadlyLeaveLittleMemoryUnused) {
    for (const std::size_t size : {1'000U, 1'025U, 4'682U}) {
        const Bytes body = test::zeros(1) + test::repeated(size, 'x');
        const std::size_t count = 24'000'000 / size;
        expect_bounded_heap({"frames of " + std::to_string(size) + " bytes",
                             test::many_frames("PRIV", body, count) + test::good_audio()});
    }
}

}  // namespace
}  // namespace brindle
