// What StripTags leaves in a file, byte for byte.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "id3v2/cMP3ID3v2.h"
#include "support/bytes.h"
#include "support/frames.h"
#include "support/id3v1.h"
#include "support/memory_environment.h"
#include "support/tags.h"
#include "support/written_files.h"

namespace brindle {
namespace {

using test::Bytes;
using test::FileCall;
using test::Frame;
using test::Id3v1;
using test::Mode;
using test::Tag;

const String kName = u"song.mp3";
const Frame kFrame;  // 417 bytes
const Bytes kAudio = test::stream(kFrame, 120);
const Bytes kRecord = Id3v1{.title = "Song"}.bytes();
const Bytes kTag = Tag().text("TIT2", "Song").padded_to(600).bytes();

constexpr std::int32_t kV1 = 1;
constexpr std::int32_t kV2 = 2;
constexpr std::int32_t kBoth = 3;

Bytes junk(std::size_t count) {
    return test::repeated(count, 0x55);
}

class Stripping : public ::testing::Test {
protected:
    void open(const Bytes& content) {
        world_.files.put(kName, content);
        model_.FileName(kName);
        world_.files.reset_counts();
    }
    bool strip(std::int32_t tags) {
        const bool stripped = model_.StripTags(tags);
        EXPECT_EQ(world_.files.names(), std::vector<String>{kName});
        EXPECT_EQ(world_.files.open_files(), 0U);
        return stripped;
    }
    // The file after a strip that works.
    const Bytes& stripped(std::int32_t tags) {
        EXPECT_TRUE(strip(tags));
        return content();
    }
    [[nodiscard]] const Bytes& content() const { return world_.files.content(kName); }
    void expect_nothing_was_written() const {
        EXPECT_EQ(world_.files.bytes_written(), 0U);
        EXPECT_EQ(world_.files.calls(FileCall::Create), 0U);
    }

    test::MemoryEnvironment world_;
    cMP3ID3v2 model_{world_.environment};
};

TEST_F(Stripping, TakesOffWhatIsNamed) {
    struct Row {
        std::int32_t tags;
        Bytes left;
    };
    for (const Row& row :
         {Row{kV1, kTag + kAudio}, Row{kV2, kAudio + kRecord}, Row{kBoth, kAudio}}) {
        open(kTag + kAudio + kRecord);
        EXPECT_EQ(stripped(row.tags), row.left) << row.tags;
    }
}

TEST_F(Stripping, AnyOtherNumberStripsNothingAndIsTrue) {
    for (const std::int32_t tags : {0, 4, -1, 99}) {
        open(kTag + kAudio + kRecord);
        EXPECT_EQ(stripped(tags), kTag + kAudio + kRecord) << tags;
        expect_nothing_was_written();
    }
}

TEST_F(Stripping, FileWithoutTagsIsTrueAndUntouched) {
    for (const std::int32_t tags : {kV1, kV2, kBoth}) {
        open(kAudio);
        EXPECT_EQ(stripped(tags), kAudio);
        expect_nothing_was_written();
    }
}

TEST_F(Stripping, ModelIsReadAgain) {
    open(kTag + kAudio + kRecord);
    model_.Title(u"Not saved");
    EXPECT_TRUE(strip(kBoth));
    EXPECT_FALSE(model_.HasID3v1Tag());
    EXPECT_FALSE(model_.HasID3v2Tag());
    EXPECT_EQ(model_.TotalId3v2TagLen(), 0);
    EXPECT_EQ(model_.Title(), u"");
    EXPECT_EQ(model_.analyser().HeaderStartPos(), 0);
    EXPECT_EQ(model_.FileName(), kName);
}

TEST_F(Stripping, EditsInMemoryAreNotWritten) {
    open(kTag + kAudio + kRecord);
    model_.Title(u"Not saved");
    model_.Titlev1Tag(u"Not saved");
    EXPECT_EQ(stripped(kV1), kTag + kAudio);
    EXPECT_EQ(model_.Title(), u"Song");
}

TEST_F(Stripping, RightAfterASaveRemovesTheSavedTag) {
    for (const std::int32_t tags : {kV2, kBoth}) {
        open(kAudio);
        model_.Update();
        ASSERT_FALSE(model_.HasID3v2Tag());  // as of the opening
        EXPECT_EQ(stripped(tags), tags == kV2 ? kAudio + test::blank_record() : kAudio);
    }
}

TEST_F(Stripping, PaddingAndJunkInFrontOfTheAudioGoWithTheTag) {
    open(junk(20) + kTag + junk(70) + kAudio);
    EXPECT_EQ(stripped(kV2), kAudio);
}

TEST_F(Stripping, SecondTagIsRemovedWithTheFirst) {
    open(kTag + kTag + kAudio);
    EXPECT_EQ(stripped(kV2), kAudio);
}

TEST_F(Stripping, JunkInFrontOfTheAudioStaysInAFileWithoutATag) {
    open(junk(70) + kAudio);
    EXPECT_EQ(stripped(kV2), junk(70) + kAudio);
    expect_nothing_was_written();
}

TEST_F(Stripping, TagThatClaimsSomeBytesOfTheAudioGivesThemBack) {
    open(Tag().padding(400).size(430).bytes() + kAudio);
    EXPECT_EQ(stripped(kV2), kAudio);
}

TEST_F(Stripping, FramesInFrontOfAChangeOfModeStay) {
    const Bytes audio =
        test::stream(kFrame, 5) + test::stream(kFrame.with_mode(Mode::JointStereo), 120);
    open(kTag + audio);
    EXPECT_EQ(stripped(kV2), audio);
}

TEST_F(Stripping, FileOfExactly100FramesKeepsItsFirst) {
    open(kTag + test::stream(kFrame, 100) + kRecord);
    EXPECT_EQ(stripped(kBoth), test::stream(kFrame, 100));
}

TEST_F(Stripping, FewFramesThatAreNoStreamForTheAnalyserStay) {
    const Bytes audio = test::stream(kFrame, 10);
    for (const std::uint32_t size : {590U, 580U, 600U}) {
        open(Tag().padding(590).size(size).bytes() + audio);
        EXPECT_EQ(stripped(kV2), audio) << size;
    }
}

TEST_F(Stripping, TagInsideAStreamThatBeginsTheFileIsAudio) {
    const Frame mpeg2{.version = 2, .kbps = 64, .frequency = 22050};  // no FF FB ends the search
    Bytes audio = test::stream(mpeg2, 120);
    const Bytes inside = Tag().padding(90).bytes();
    std::copy(inside.begin(), inside.end(), audio.begin() + 208 + 50);
    open(audio);
    ASSERT_TRUE(model_.HasID3v2Tag());
    EXPECT_EQ(stripped(kV2), audio);
    expect_nothing_was_written();
}

// --- without audio ---

TEST_F(Stripping, WithoutAudioOnlyTheTagsOwnAreaIsRemoved) {
    open(kTag + junk(6000) + kRecord);
    EXPECT_EQ(stripped(kV2), junk(6000) + kRecord);
    open(junk(33) + kTag + junk(6000));
    EXPECT_EQ(stripped(kV2), junk(6033));
}

TEST_F(Stripping, WithoutAudioTheOneByteAfterTheTagStays) {
    open(Tag().padded_to(5000).bytes() + junk(1));
    EXPECT_EQ(stripped(kV2), junk(1));
}

TEST_F(Stripping, TagThatIsTheWholeFileLeavesAnEmptyOne) {
    open(Tag().padded_to(5000).bytes());
    EXPECT_EQ(stripped(kV2), Bytes());
}

TEST_F(Stripping, TagThatClaimsMoreThanAFileWithoutAudioHoldsIsFalseAndNothingIsTouched) {
    const Bytes old = Tag().padding(590).size(2'000'000).bytes() + junk(6000);
    open(old);
    EXPECT_FALSE(strip(kV2));
    EXPECT_EQ(content(), old);
    expect_nothing_was_written();
}

TEST_F(Stripping, OfBothTouchesNothingWhereTheTagCannotGo) {
    const Bytes old = Tag().padding(590).size(2'000'000).bytes() + junk(6000);
    open(old + kRecord);
    EXPECT_FALSE(strip(kBoth));
    EXPECT_EQ(content(), old + kRecord);
    expect_nothing_was_written();
}

// --- refusals ---

TEST_F(Stripping, ObjectWithoutAFileIsFalse) {
    for (const std::int32_t tags : {kV1, kV2, kBoth}) {
        EXPECT_FALSE(model_.StripTags(tags));
    }
    EXPECT_TRUE(model_.StripTags(0));
}

TEST_F(Stripping, MissingFileIsFalseAndNotCreatedAgain) {
    for (const std::int32_t tags : {kV1, kV2, kBoth}) {
        open(kTag + kAudio + kRecord);
        world_.files.remove(kName);
        EXPECT_FALSE(model_.StripTags(tags));
        EXPECT_EQ(world_.files.names(), std::vector<String>());
    }
}

TEST_F(Stripping, FileThatMayNotBeWrittenIsFalseAndNothingIsCreated) {
    open(kTag + kAudio + kRecord);
    world_.files.make_read_only(kName);
    for (const std::int32_t tags : {kV1, kV2, kBoth}) {
        EXPECT_FALSE(strip(tags));
        EXPECT_EQ(content(), kTag + kAudio + kRecord);
        expect_nothing_was_written();
    }
}

TEST_F(Stripping, ChangedFileIsCutWhereItsOwnAudioBegins) {
    for (const std::int32_t tags : {kV2, kBoth}) {
        open(kTag + kAudio);
        world_.files.put(kName, kTag + junk(300) + kAudio + kAudio);
        EXPECT_EQ(stripped(tags), kAudio + kAudio);
    }
}

TEST_F(Stripping, FileReplacedByOneOfTheSameLengthIsCutWhereItsOwnAudioBegins) {
    open(kTag + junk(417) + kAudio);
    const Bytes other = Tag().padded_to(300).bytes() + test::stream(kFrame, 1) + kAudio;
    world_.files.put(kName, other + junk(300));
    EXPECT_EQ(stripped(kV2), test::stream(kFrame, 1) + kAudio + junk(300));
}

TEST_F(Stripping, FileThatCannotBeReadAgainIsNotWrittenOver) {
    open(kTag + kAudio);
    // The second opening is the reading afterwards.
    world_.files.fail(
        {.nth = 2, .call = FileCall::Open, .error = Error(RuntimeError::TooManyFiles)});
    EXPECT_TRUE(strip(kV2));
    ASSERT_TRUE(world_.files.has_failed());
    world_.files.fail_nothing();
    world_.files.put(kName, kTag + kAudio);
    EXPECT_THROW(model_.Update(), Error);
    EXPECT_EQ(content(), kTag + kAudio);
}

}  // namespace
}  // namespace brindle
