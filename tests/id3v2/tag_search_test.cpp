#include "id3v2/tag_search.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/bytes.h"
#include "support/memory_files.h"
#include "support/read_only_file.h"
#include "support/shrunk_file.h"
#include "util/file_window.h"

namespace brindle {
namespace {

using test::Bytes;
using test::MemoryFiles;
using test::repeated;

constexpr std::uint8_t kFiller = 0x55;
const Bytes kTag = Bytes("ID3") + Bytes{3, 0};
const Bytes kSync{0xFF, 0xFB};

struct Mark {
    std::size_t offset;
    Bytes bytes;
};

Bytes file_with(std::size_t length, const std::vector<Mark>& marks) {
    Bytes file = repeated(length, kFiller);
    for (const Mark& mark : marks) {
        for (std::size_t i = 0; i < mark.bytes.size() && mark.offset + i < length; ++i) {
            file[mark.offset + i] = mark.bytes[i];
        }
    }
    return file;
}

class Opened {
public:
    explicit Opened(const Bytes& content) {
        files_.put(u"a.mp3", content);
        file_ = files_.open(u"a.mp3", OpenMode::Read);
        window_.emplace(*file_);
    }
    FileWindow& window() { return *window_; }

private:
    MemoryFiles files_;
    std::unique_ptr<BinaryFile> file_;
    std::optional<FileWindow> window_;
};

std::optional<std::int32_t> tag_in(const Bytes& content) {
    Opened file(content);
    return find_tag(file.window());
}

Bytes identifier(std::uint8_t version) {
    return Bytes("ID3") + Bytes{version};
}

struct SearchCase {
    const char* name;
    std::size_t length;
    std::vector<Mark> marks;
    std::optional<std::int32_t> found;
};

// Blocks of 4,096 bytes begin at 0, 4093, 8186, 12279 ... (each 3 bytes before the last one's
// end). A block is searched if the file has at least 2 bytes after it.
TEST(TagSearch, FindsTheFirstTagOfAKnownVersionBeforeAudio) {
    const std::optional<std::int32_t> none;
    const SearchCase cases[] = {
        {"empty file", 0, {}, none},
        {"no tag, no audio", 20000, {}, none},
        {"4,096 bytes", 4096, {{0, kTag}}, none},
        {"4,097 bytes", 4097, {{0, kTag}}, none},
        {"4,098 bytes", 4098, {{0, kTag}}, 0},
        {"version 2", 5000, {{0, identifier(2)}}, 0},
        {"version 4", 5000, {{0, identifier(4)}}, 0},
        {"version 1", 5000, {{0, identifier(1)}}, none},
        {"version 5", 5000, {{0, identifier(5)}}, none},
        {"version 0", 5000, {{0, identifier(0)}}, none},
        {"version 255", 5000, {{0, identifier(255)}}, none},
        {"lower case", 5000, {{0, Bytes("id3") + Bytes{3}}}, none},
        {"after junk", 5000, {{100, kTag}}, 100},
        // The version byte is the first one after the block.
        {"its version after the block", 4098, {{4093, identifier(3)}}, 4093},
        {"across the border, next block searched", 8191, {{4094, kTag}}, 4094},
        {"across the border, next block not filled", 8190, {{4094, kTag}}, none},
        {"last byte of the first block", 8191, {{4095, kTag}}, 4095},
        {"second block", 9000, {{5000, kTag}}, 5000},
        {"second block, not filled", 8190, {{5000, kTag}}, none},
        {"third block", 12284, {{12279, kTag}}, 12279},
        {"third block, not filled", 12283, {{12279, kTag}}, none},
        {"fourth block, not filled", 16376, {{12282, kTag}}, none},
        {"fourth block, filled", 16377, {{12282, kTag}}, 12282},
        {"audio first, in an earlier block", 9000, {{10, kSync}, {5000, kTag}}, none},
        {"audio before the tag, same block", 9000, {{10, kSync}, {50, kTag}}, 50},
        {"audio right before the tag", 9000, {{48, kSync}, {50, kTag}}, 50},
        {"tag before audio", 9000, {{50, kTag}, {100, kSync}}, 50},
        {"audio without CRC protection off", 9000, {{10, Bytes{0xFF, 0xFA}}, {5000, kTag}}, 5000},
        {"audio across the border counts in the next block",
         12284,
         {{4095, kSync}, {8186 + 90, kTag}},
         none},
        {"unknown version hides the known one in its block",
         9000,
         {{0, identifier(1)}, {10, kTag}},
         none},
        {"unknown version hides the audio in its block",
         9000,
         {{0, identifier(1)}, {10, kSync}, {5000, kTag}},
         5000},
        {"unknown version, known one in the next block",
         9000,
         {{0, identifier(9)}, {4093, kTag}},
         4093},
        {"unknown version in the overlap hides the next block too",
         12284,
         {{4093, identifier(7)}, {4200, kTag}},
         none},
        {"unknown version in the overlap, known one two blocks on",
         12284,
         {{4093, identifier(7)}, {4200, kTag}, {8186, kTag}},
         8186},
        {"letters broken by the block's end are no tag", 8190, {{4093, Bytes("ID")}}, none},
        {"first of two tags", 9000, {{7, kTag}, {1000, kTag}}, 7},
        {"half an identifier, then a tag", 9000, {{7, Bytes("IDID3") + Bytes{3}}}, 9},
    };
    for (const SearchCase& search : cases) {
        EXPECT_EQ(tag_in(file_with(search.length, search.marks)), search.found) << search.name;
    }
}

TEST(TagSearch, AudioSyncInTheFirstBlockWithoutAnIdentifierEndsTheSearch) {
    EXPECT_EQ(tag_in(file_with(20000, {{4000, kSync}, {4200, kTag}})), std::nullopt);
}

TEST(TagSearch, ReadsAFileOfMegabytesOnceWhenNothingIsFound) {
    MemoryFiles files;
    constexpr std::size_t kLength = 4'000'000;
    files.put(u"a.mp3", repeated(kLength, kFiller));
    const auto file = files.open(u"a.mp3", OpenMode::Read);
    FileWindow window(*file);
    EXPECT_EQ(find_tag(window), std::nullopt);
    EXPECT_LE(files.bytes_read(), kLength);
    EXPECT_LE(files.calls(test::FileCall::Read), kLength / FileWindow::kBlock + 4);
}

// 2 GiB, less a byte, that nobody has to store.
class LongestFile final : public test::ReadOnlyFile {
public:
    static constexpr std::int64_t kLength = std::numeric_limits<std::int32_t>::max();

    explicit LongestFile(std::int64_t tag) : tag_(tag) {}

    std::int64_t length() override { return kLength; }
    std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) override {
        std::fill(into.begin(), into.end(), kFiller);
        for (std::size_t i = 0; i < kTag.size(); ++i) {
            const std::int64_t place = tag_ + static_cast<std::int64_t>(i) - offset;
            if (place >= 0 && std::cmp_less(place, into.size())) {
                into[static_cast<std::size_t>(place)] = kTag[i];
            }
        }
        return into.size();
    }

private:
    std::int64_t tag_;
};

// The last block that is searched begins at 4,093 x 524,670 = 2,147,474,310: the next one would end
// less than a block before 2 GiB.
TEST(TagSearch, EndsTwoBlocksBefore2GiB) {
    LongestFile file(std::int64_t{2'147'474'310} + 4'093 + 1'000);
    FileWindow window(file);
    EXPECT_EQ(find_tag(window), std::nullopt);
}

TEST(TagSearch, TagThatWasCutOffSinceIsNone) {
    for (const char* left : {"", "ID", "ID3"}) {
        test::ShrunkFile file(left, 20'000);
        FileWindow window(file);
        EXPECT_EQ(find_tag(window), std::nullopt) << left;
        EXPECT_FALSE(is_tag_at(window, 0)) << left;
    }
}

struct DuplicateCase {
    const char* name;
    std::size_t length;
    std::vector<Mark> marks;
    std::int64_t position;
    bool found;
};

TEST(TagSearch, ASecondTagIsSeenOnlyRightWhereTheFirstOneEnds) {
    const DuplicateCase cases[] = {
        {"there", 9000, {{100, kTag}}, 100, true},
        {"one byte later", 9000, {{101, kTag}}, 100, false},
        {"unknown version", 9000, {{100, identifier(5)}}, 100, false},
        {"audio later in the block", 9000, {{100, kTag}, {300, kSync}}, 100, true},
        {"block just filled", 100 + 4098, {{100, kTag}}, 100, true},
        {"block not filled", 100 + 4097, {{100, kTag}}, 100, false},
        {"beyond the file", 9000, {{100, kTag}}, 100000, false},
    };
    for (const DuplicateCase& duplicate : cases) {
        Opened file(file_with(duplicate.length, duplicate.marks));
        EXPECT_EQ(is_tag_at(file.window(), duplicate.position), duplicate.found) << duplicate.name;
    }
}

}  // namespace
}  // namespace brindle
