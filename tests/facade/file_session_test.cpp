// A session opens a file once, however many readers look at it.
#include <array>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/error.h>
#include <brindle/file_session.h>
#include <brindle/frame_walk.h>
#include <brindle/tag_facts.h>

#include "facade/loaded_header.h"
#include "support/bytes.h"
#include "support/memory_environment.h"
#include "support/raised_error.h"
#include "support/tags.h"

namespace brindle::test {
namespace {

const String kOther = u"other.mp3";

Bytes titled(const std::string& title) {
    return Tag(3).text("TIT2", title) + audio();
}

class FileSessions : public testing::Test {
protected:
    FileSessions() {
        world.files.put(kSong, titled("One"));
        world.files.put(kOther, titled("Two"));
        world.files.reset_counts();
    }

    [[nodiscard]] std::uint64_t openings() const { return world.files.calls(FileCall::Open); }

    MemoryEnvironment world;
    FileSession session{world.environment};
    cMPEGHeader header{session.environment()};
};

TEST_F(FileSessions, AllReadersShareOneOpening) {
    header.FileName(kSong);
    EXPECT_EQ(header.Title(), u"One");
    EXPECT_EQ(read_tag_facts(header).text(u"TIT2"), u"One");
    EXPECT_EQ(walk_frames(header).frames, 120);
    cMPEGHeader second(session.environment());
    second.FileName(kSong);
    EXPECT_EQ(second.Title(), u"One");
    EXPECT_EQ(openings(), 1U);
}

TEST_F(FileSessions, WithoutASessionEachReaderOpensTheFile) {
    cMPEGHeader alone(world.environment);
    alone.FileName(kSong);
    static_cast<void>(read_tag_facts(alone));
    static_cast<void>(walk_frames(alone));
    EXPECT_EQ(openings(), 3U);
}

TEST_F(FileSessions, AnotherFileTakesThePlaceOfTheFirst) {
    header.FileName(kSong);
    header.FileName(kOther);
    EXPECT_EQ(header.Title(), u"Two");
    EXPECT_EQ(world.files.open_files(), 1U);
    EXPECT_EQ(openings(), 2U);
}

// Another program saves by putting a new file in the place of the old one.
TEST_F(FileSessions, AReplacedFileIsReadAsItWas) {
    header.FileName(kSong);
    world.files.put(u"new.mp3", titled("New"));
    world.files.put(kSong, world.files.content(u"new.mp3"));
    EXPECT_EQ(read_tag_facts(header).text(u"TIT2"), u"One");
    cMPEGHeader outside(world.environment);
    outside.FileName(kSong);
    EXPECT_EQ(outside.Title(), u"New");
}

TEST_F(FileSessions, BytesAreThoseOfTheFile) {
    header.FileName(kSong);
    std::array<std::uint8_t, 4> head{};
    EXPECT_EQ(session.read(0, head), head.size());
    EXPECT_EQ(head, (std::array<std::uint8_t, 4>{'I', 'D', '3', 3}));
    const auto length = static_cast<std::int64_t>(world.files.content(kSong).size());
    EXPECT_EQ(session.read(length - 1, head), 1U);
    EXPECT_EQ(session.read(length, head), 0U);
    EXPECT_EQ(openings(), 1U);
}

TEST_F(FileSessions, WithoutAFileThereAreNoBytes) {
    std::array<std::uint8_t, 4> bytes{};
    EXPECT_EQ(session.read(0, bytes), 0U);
    header.FileName(u"missing.mp3");
    EXPECT_EQ(session.read(0, bytes), 0U);
}

TEST_F(FileSessions, AFileThatCantBeOpenedLetsGoOfTheOneBefore) {
    header.FileName(kSong);
    world.files.fail({.call = FileCall::Open});
    header.FileName(kOther);
    EXPECT_TRUE(header.OpeningError());
    EXPECT_EQ(world.files.open_files(), 0U);
}

TEST_F(FileSessions, ItsHeadersOnlyRead) {
    const Bytes before = world.files.content(kSong);
    header.FileName(kSong);
    header.Title(u"Changed");
    EXPECT_EQ(error_number([&] { header.SaveAllInfo(SaveOptions{}); }), 5);
    EXPECT_EQ(error_number([&] { header.RemoveTags(v1andv2TagsBothPresent); }), 5);
    EXPECT_EQ(world.files.content(kSong), before);
    EXPECT_EQ(world.files.names().size(), 2U);
}

TEST_F(FileSessions, EverythingIsClosedAtTheEnd) {
    {
        FileSession inner(world.environment);
        cMPEGHeader reader(inner.environment());
        reader.FileName(kSong);
        EXPECT_EQ(world.files.open_files(), 1U);
    }
    EXPECT_EQ(world.files.open_files(), 0U);
}

}  // namespace
}  // namespace brindle::test
