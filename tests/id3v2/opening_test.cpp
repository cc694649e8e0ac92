#include <cstdint>
#include <string_view>

#include <gtest/gtest.h>

#include <brindle/error.h>

#include "id3v2/opened_model.h"
#include "support/id3v1.h"
#include "support/raised_error.h"

namespace brindle {
namespace {

using namespace std::string_view_literals;
using test::audio;
using test::Bytes;
using test::error_number;
using test::kSong;
using test::OpenedModel;
using test::repeated;
using test::Tag;
using test::zeros;

Bytes tagged(const Tag& tag) {
    return tag.bytes() + audio();
}

// A frame whose size is above 16 MiB.
Tag corrupt_tag() {
    return Tag(3)
        .text("TIT2", "Song")
        .text("TPE1", "Singer")
        .text("TALB", "Album")
        .frame_claiming("TRCK", 16777217,
                        "\0"
                        "1"sv);
}

TEST(Opening, AFreshModelHasNothing) {
    test::MemoryEnvironment world;
    const cMP3ID3v2 model(world.environment);
    EXPECT_EQ(model.FileName(), u"");
    EXPECT_FALSE(model.HasID3v1Tag());
    EXPECT_FALSE(model.HasID3v2Tag());
    EXPECT_EQ(model.TagVersion(), 0);
    EXPECT_EQ(model.TotalId3v2TagLen(), 0);
    EXPECT_EQ(model.Junk(), 0);
    EXPECT_EQ(model.FrameCount(), 0);
    EXPECT_EQ(model.Duration(), -1);
    EXPECT_EQ(model.MpegLayer(), u"0");
    EXPECT_EQ(model.MpegVersion(), u"0");
    EXPECT_FALSE(model.IsVBR());
    EXPECT_EQ(world.files.calls(), 0U);
}

TEST(Opening, AFileWithATagOf4106BytesGivesTheAnalyserItsPlace) {
    OpenedModel opened(tagged(Tag(3).text("TIT2", "Song").padded_to(4106)));
    EXPECT_EQ(opened.model.FileName(), kSong);
    EXPECT_TRUE(opened.model.HasID3v2Tag());
    EXPECT_EQ(opened.model.Id3v2TagSize(), 4106);
    EXPECT_EQ(opened.model.TotalId3v2TagLen(), 4106);
    EXPECT_EQ(opened.model.analyser().ID3v2Length, 4106);
    EXPECT_EQ(opened.model.analyser().ID3v2Offset, 0);
    EXPECT_FALSE(opened.model.analyser().HasV1Tag);
    EXPECT_EQ(opened.model.analyser().HeaderStartPos(), 4106);
    EXPECT_EQ(opened.model.Title(), u"Song");
}

TEST(Opening, WithoutATagTheAnalyserBeginsAtTheStart) {
    OpenedModel opened(audio());
    EXPECT_FALSE(opened.model.HasID3v2Tag());
    EXPECT_EQ(opened.model.TotalId3v2TagLen(), 0);
    EXPECT_EQ(opened.model.analyser().ID3v2Length, 0);
    EXPECT_EQ(opened.model.analyser().ID3v2Offset, 0);
    EXPECT_EQ(opened.model.analyser().HeaderStartPos(), 0);
}

TEST(Opening, ATagAfterJunkIsFoundAtItsOffset) {
    OpenedModel opened(repeated(100, 'j') + tagged(Tag(3).text("TIT2", "Song").padded_to(1000)));
    EXPECT_TRUE(opened.model.HasID3v2Tag());
    EXPECT_EQ(opened.model.analyser().ID3v2Offset, 100);
    EXPECT_EQ(opened.model.analyser().ID3v2Length, 1000);
    EXPECT_EQ(opened.model.analyser().HeaderStartPos(), 1100);
}

TEST(Opening, BothVersionMembersGiveTheVersionByte) {
    for (const int version : {2, 3, 4}) {
        OpenedModel opened(tagged(Tag(version).padded_to(200)));
        EXPECT_EQ(opened.model.TagVersion(), version);
        EXPECT_EQ(opened.model.ID3v2TagVersion(), version);
    }
}

TEST(Opening, ARecordIsReadAndPassedToTheAnalyser) {
    OpenedModel opened(audio() +
                       test::Id3v1{.title = "V1", .artist = "A1", .year = "1999"}.bytes());
    EXPECT_TRUE(opened.model.HasID3v1Tag());
    EXPECT_TRUE(opened.model.analyser().HasV1Tag);
    EXPECT_EQ(opened.model.Titlev1Tag(), u"V1");
    EXPECT_EQ(opened.model.artistv1Tag(), u"A1");
    EXPECT_EQ(opened.model.Yearv1Tag(), u"1999");
}

TEST(Opening, ASecondTagRightAfterTheFirstIsReadIntoTheSameFramesAndCountsAsJunk) {
    const Tag first = Tag(3).text("TIT2", "A").text("TPE1", "x").padded_to(500);
    const Tag second = Tag(4).text("TIT2", "B").text("TALB", "y").padded_to(300);
    OpenedModel opened(first.bytes() + tagged(second));
    cMP3ID3v2& model = opened.model;
    EXPECT_EQ(model.TagVersion(), 3);
    EXPECT_EQ(model.TotalId3v2TagLen(), 500);
    EXPECT_EQ(model.Junk(), 300);
    EXPECT_EQ(model.analyser().ID3v2Length, 800);
    EXPECT_EQ(model.FrameCount(), 2) << "the second walk ends after its first frame";
    EXPECT_EQ(model.TagsInFrame(u"TIT2"), 2);
    EXPECT_EQ(model.Tag(u"TIT2", 1), u"A");
    EXPECT_EQ(model.Tag(u"TIT2", 2), u"B");
    EXPECT_EQ(model.Title(), u"B");
}

TEST(Opening, ASecondTagElsewhereIsNotRead) {
    const Tag first = Tag(3).text("TIT2", "A").padded_to(500);
    OpenedModel opened(first.bytes() + zeros(1) + tagged(Tag(3).text("TIT2", "B").padded_to(300)));
    EXPECT_EQ(opened.model.Junk(), 0);
    EXPECT_EQ(opened.model.TagsInFrame(u"TIT2"), 1);
}

// The size of the second tag against half of the file: 2 x 6000 = 12000.
TEST(Opening, ASecondTagOfHalfTheFileIsReadButIsNoJunk) {
    const Bytes first = Tag(3).text("TIT2", "A").padded_to(500).bytes();
    const Bytes second = Tag(3).text("TIT2", "B").size(6000).bytes();
    const auto file = [&](std::size_t length) {
        return first + second + repeated(length - first.size() - second.size(), 'x');
    };
    OpenedModel half(file(12000));
    EXPECT_EQ(half.model.Junk(), 0);
    EXPECT_EQ(half.model.TagsInFrame(u"TIT2"), 2);
    OpenedModel less(file(12001));
    EXPECT_EQ(less.model.Junk(), 6010);
}

TEST(Opening, ADuplicateIsLookedForWhereTheFileSaysItsFirstTagEndsWithoutJunkBefore) {
    // The first tag lies at 100 and is 500 long; a tag at 500 counts as following it.
    Bytes file = repeated(100, 'j') + Tag(3).text("TIT2", "A").padded_to(400).size(490).bytes();
    file += Tag(3).text("TIT2", "B").padded_to(300).bytes() + audio();
    OpenedModel opened(file);
    EXPECT_EQ(opened.model.Junk(), 300);
    EXPECT_EQ(opened.model.TagsInFrame(u"TIT2"), 2);
}

TEST(Opening, CorruptTagsAreStampedArtistFirst) {
    OpenedModel opened;
    opened.world.clock.date = {2026, 11, 16};
    opened.world.clock.milliseconds = 83421593;
    opened.world.clock.milliseconds_step = 4;
    opened.open(tagged(corrupt_tag()));
    EXPECT_EQ(opened.model.Artist(), u"Corrupt ID3v2 Tag11162026 83421593");
    EXPECT_EQ(opened.model.Title(), u"Corrupt ID3v2 Tag11162026 83421597");
    EXPECT_EQ(opened.model.Album(), u"Album");
    EXPECT_EQ(opened.model.Tag(u"TIT2", 1), u"Song") << "the frames stay as they were read";
}

TEST(Opening, TheStampShowsTwoDigitsAndUnsignedMilliseconds) {
    struct Stamp {
        Date date;
        std::uint32_t milliseconds;
        const char16_t* text;
    };
    const Stamp stamps[] = {
        {{2027, 1, 2}, 0, u"Corrupt ID3v2 Tag01022027 0"},
        {{1999, 12, 31}, 4294967295U, u"Corrupt ID3v2 Tag12311999 4294967295"},
        {{2026, 9, 30}, 2147483648U, u"Corrupt ID3v2 Tag09302026 2147483648"},
    };
    for (const Stamp& stamp : stamps) {
        OpenedModel opened;
        opened.world.clock.date = stamp.date;
        opened.world.clock.milliseconds = stamp.milliseconds;
        opened.open(tagged(corrupt_tag()));
        EXPECT_EQ(opened.model.Artist(), stamp.text);
        EXPECT_EQ(opened.model.Title(), stamp.text);
    }
}

TEST(Opening, ACorruptSecondTagStampsNothing) {
    const Tag first = Tag(3).text("TIT2", "A").text("TPE1", "x").padded_to(500);
    OpenedModel opened(first.bytes() +
                       tagged(Tag(3).frame_claiming("TALB", 16777217, "\0y"sv).padding(600)));
    EXPECT_EQ(opened.model.Junk(), 622);
    EXPECT_EQ(opened.model.Title(), u"A");
    EXPECT_EQ(opened.model.Artist(), u"x");
}

TEST(Opening, AnotherFileClearsTheStamp) {
    OpenedModel opened(tagged(corrupt_tag()));
    opened.open(tagged(Tag(3).text("TIT2", "Good").padded_to(200)));
    EXPECT_EQ(opened.model.Title(), u"Good");
    EXPECT_EQ(opened.model.Artist(), u"");
}

TEST(Opening, AMissingFileLeavesAFreshModelEmpty) {
    OpenedModel opened;
    opened.model.FileName(u"nothing.mp3");
    EXPECT_EQ(opened.model.FileName(), u"");
    EXPECT_EQ(opened.model.Title(), u"");
    EXPECT_EQ(opened.model.FrameCount(), 0);
}

TEST(Opening, AMissingFileLeavesTheNameAndTagLengthOfTheOneBefore) {
    OpenedModel opened(tagged(Tag(3)
                                  .text("TIT2", "Song")
                                  .field("Intro", "5")
                                  .lyrics("eng", "", "La")
                                  .text("TCON", "(17)")
                                  .padded_to(600)));
    const auto frames = opened.model.Frames();
    opened.model.FileName(u"nothing.mp3");
    EXPECT_EQ(opened.model.FileName(), kSong);
    EXPECT_EQ(opened.model.TotalId3v2TagLen(), 600);
    EXPECT_EQ(opened.model.Id3v2TagSize(), 600);
    EXPECT_FALSE(opened.model.HasID3v2Tag());
    EXPECT_EQ(opened.model.TagVersion(), 0);
    EXPECT_EQ(opened.model.FrameCount(), 0);
    EXPECT_EQ(opened.model.Title(), u"");
    EXPECT_EQ(opened.model.OtherGenreName(), u"");
    EXPECT_FALSE(opened.model.CustomFieldExists(u"Intro"));
    EXPECT_EQ(opened.model.Duration(), -1);
    EXPECT_EQ(frames->Count(), 4) << "what was handed out stays as it was";
}

// The name of the file before stays, but nothing is known of it that could be written.
TEST(Opening, AnEmptyNameAfterAFileKeepsThatFileFromBeingSaved) {
    OpenedModel opened(tagged(Tag(3).text("TIT2", "Song").padded_to(600)));
    const auto before = opened.world.files.content(kSong);
    opened.model.FileName(u"");
    EXPECT_EQ(error_number([&] { opened.model.Update(); }), 53);
    EXPECT_EQ(opened.world.files.content(kSong), before);
}

TEST(Opening, LyricsAndGenreNumberOutliveTheirFile) {
    OpenedModel opened(tagged(Tag(3).lyrics("eng", "", "La").text("TCON", "(179)").padded_to(600)));
    opened.open(tagged(Tag(3).text("TIT2", "Other").padded_to(300)));
    EXPECT_EQ(opened.model.Lyrics(), u"engLa");
    EXPECT_EQ(opened.model.Genre(), 17);
    EXPECT_EQ(opened.model.OtherGenreName(), u"");
    EXPECT_EQ(opened.model.Title(), u"Other");
    EXPECT_EQ(opened.model.TotalId3v2TagLen(), 300);
}

TEST(Opening, AnUntaggedFileHasNoTagLength) {
    OpenedModel opened(tagged(Tag(3).padded_to(600)));
    opened.open(audio());
    EXPECT_EQ(opened.model.TotalId3v2TagLen(), 0);
    EXPECT_FALSE(opened.model.HasID3v2Tag());
}

TEST(Opening, AFileThatCannotBeOpenedRaisesAsTheReaderAndKeepsItsName) {
    OpenedModel opened;
    opened.world.files.put(kSong, audio());
    opened.world.files.fail(
        {.nth = 1, .call = test::FileCall::Open, .error = Error(RuntimeError::PermissionDenied)});
    try {
        opened.model.FileName(kSong);
        FAIL() << "nothing was raised";
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), 70);
        EXPECT_EQ(error.description(), u"Permission denied");
        EXPECT_EQ(error.source(), u"BrindleId3v1Tagger");
    }
    EXPECT_EQ(opened.model.FileName(), kSong);
    EXPECT_EQ(opened.model.Duration(), -1);
}

TEST(Opening, AFolderExistsAndCannotBeOpened) {
    OpenedModel opened;
    opened.world.files.make_folder(u"folder.mp3");
    try {
        opened.model.FileName(u"folder.mp3");
        FAIL() << "nothing was raised";
    } catch (const Error& error) {
        EXPECT_EQ(error.source(), u"BrindleId3v1Tagger");
    }
}

TEST(Opening, ChannelModesHaveTheirNames) {
    const std::pair<test::Mode, const char16_t*> names[] = {
        {test::Mode::Stereo, u"Stereo"},
        {test::Mode::JointStereo, u"Joint Stereo"},
        {test::Mode::DualChannel, u"Mono"},
        {test::Mode::SingleChannel, u"Mono"},
    };
    for (const auto& [mode, name] : names) {
        OpenedModel opened(stream(test::Frame{}.with_mode(mode), 120));
        EXPECT_EQ(opened.model.MonoStereo(), name);
    }
}

TEST(Opening, StreamFactsComeFromTheAnalyser) {
    OpenedModel opened(stream(test::Frame{.version = 2, .kbps = 64, .frequency = 22050}, 120));
    EXPECT_EQ(opened.model.MpegVersion(), u"2");
    EXPECT_EQ(opened.model.MpegLayer(), u"3");
    EXPECT_EQ(opened.model.BitRate(), 64000);
    EXPECT_EQ(opened.model.Frequency(), 22050);
    EXPECT_FALSE(opened.model.IsVBR());
}

TEST(Opening, OneOpenOneLengthAndFewReadsServeAllReaders) {
    OpenedModel opened;
    opened.world.files.put(kSong, tagged(Tag(3).text("TIT2", "Song").padded_to(2048)) +
                                      test::Id3v1{.title = "V1"}.bytes());
    opened.world.files.reset_counts();
    opened.model.FileName(kSong);
    EXPECT_EQ(opened.world.files.calls(test::FileCall::Open), 1U);
    EXPECT_EQ(opened.world.files.calls(test::FileCall::Length), 1U);
    EXPECT_LE(opened.world.files.calls(test::FileCall::Read), 6U);
    EXPECT_EQ(opened.world.files.open_files(), 0U);
}

}  // namespace
}  // namespace brindle
