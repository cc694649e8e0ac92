#include <cstdint>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/error.h>
#include <brindle/text.h>

#include "facade/loaded_header.h"

namespace brindle {
namespace {

using test::audio;
using test::Bytes;
using test::Id3v1;
using test::kSong;
using test::LoadedHeader;
using test::Tag;

constexpr auto kUntagged = static_cast<eTagType>(-1);

void expect_empty(const cMPEGHeader& header) {
    EXPECT_EQ(header.MonoStereo(), u"");
    EXPECT_EQ(header.BitRate(), 0);
    EXPECT_EQ(header.FileName(), u"");
    EXPECT_EQ(header.Speed(), 0.0);
    EXPECT_EQ(header.Volume(), 0);
    EXPECT_EQ(header.Opener(), 0);
    EXPECT_EQ(header.CueInmSStart(), 0);
    EXPECT_EQ(header.TagType(), kUntagged);
    EXPECT_FALSE(header.CustomFieldExists(u"Category"));
    EXPECT_FALSE(header.VBR());
    EXPECT_EQ(header.Duration(), 0);
    EXPECT_EQ(header.Frequency(), 0);
    EXPECT_EQ(header.FrameCount(), 0);
    EXPECT_EQ(header.Title(), u"");
    EXPECT_EQ(header.NoFade(), 0);
    EXPECT_EQ(header.Composer(), u"");
    EXPECT_EQ(header.Publisher(), u"");
    EXPECT_EQ(header.CopyRight(), u"");
    EXPECT_EQ(header.Agency(), u"");
    EXPECT_EQ(header.AccountExec(), u"");
    EXPECT_EQ(header.URL(), u"");
    EXPECT_EQ(header.Copy(), u"");
    EXPECT_EQ(header.Artist(), u"");
    EXPECT_EQ(header.ArtistUrl(), u"");
    EXPECT_EQ(header.Sectone(), 0);
    EXPECT_EQ(header.Intro(), 0);
    EXPECT_EQ(header.Category(), Variant(Empty{}));
    EXPECT_EQ(header.Album(), u"");
    EXPECT_EQ(header.Track(), 0);
    EXPECT_EQ(header.Year(), 0);
    EXPECT_EQ(header.Comments(), u"");
    EXPECT_EQ(header.Endstyle(), u"");
    EXPECT_EQ(header.OutromsStart(), 0);
    EXPECT_EQ(header.artistv1Tag(), u"");
    EXPECT_EQ(header.Titlev1Tag(), u"");
    EXPECT_EQ(header.Yearv1Tag(), 0);
    EXPECT_EQ(header.Commentv1(), u"");
    EXPECT_EQ(header.v2Tag(u"TIT2", 1), u"");
    EXPECT_EQ(header.TagsInFrame(u"TIT2"), 0);
    EXPECT_FALSE(header.RepairRequired());
    EXPECT_EQ(header.ID3TagSizeIncludingHeader(), 0);
}

void assign_everything(cMPEGHeader& header) {
    header.Speed(1.5);
    header.Volume(1);
    header.Opener(1);
    header.CueInmSStart(1);
    header.CategoryLevel(u"1");
    header.CustomFieldAdd(u"x", String(u"y"));
    header.Title(u"x");
    header.NoFade(1);
    header.Composer(u"x");
    header.Publisher(u"x");
    header.CopyRight(u"x");
    header.Agency(u"x");
    header.AccountExec(u"x");
    header.URL(u"x");
    header.Copy(u"x");
    header.Song(u"x");
    header.Artist(u"x");
    header.ArtistUrl(u"x");
    header.Sectone(1);
    header.Intro(1);
    header.Category(String(u"x"));
    header.Album(u"x");
    header.Track(1);
    header.Year(1);
    header.Comments(u"x");
    header.Endstyle(u"x");
    header.OutromsStart(1);
    header.Genre(u"1");
    header.artistv1Tag(u"x");
    header.Titlev1Tag(u"x");
    header.Yearv1Tag(1);
    header.Commentv1(u"x");
    header.Test();
}

TEST(NewObject, EveryMemberReadsItsDefault) {
    test::MemoryEnvironment world;
    const cMPEGHeader header(world.environment);
    EXPECT_FALSE(header.g_InUse());
    EXPECT_EQ(header.TimeStyle(), NoFractions);
    EXPECT_FALSE(header.Writev1v2Separate());
    expect_empty(header);
    EXPECT_EQ(header.Genre(), u"");
    EXPECT_EQ(header.CategoryLevel(), u"");
    EXPECT_EQ(header.CustomFieldRetrieve(u"Category"), Variant(Empty{}));
    EXPECT_EQ(header.v2Frames(), nullptr);
    EXPECT_EQ(header.MpegVersion(), u"");
    EXPECT_EQ(world.files.calls(), 0U);
}

TEST(NewObject, AssignmentsAreIgnored) {
    test::MemoryEnvironment world;
    cMPEGHeader header(world.environment);
    assign_everything(header);
    expect_empty(header);
    EXPECT_EQ(header.Genre(), u"");
    EXPECT_EQ(header.v2Frames(), nullptr);
}

TEST(NewObject, PlainFieldsWorkAtAnyTime) {
    test::MemoryEnvironment world;
    cMPEGHeader header(world.environment);
    header.Writev1v2Separate(true);
    header.TimeStyle(OnlyFractions);
    header.g_InUse(true);
    EXPECT_TRUE(header.Writev1v2Separate());
    EXPECT_EQ(header.TimeStyle(), OnlyFractions);
    EXPECT_TRUE(header.g_InUse());
    header.g_InUse(false);
    header.FileName(u"");
    EXPECT_TRUE(header.g_InUse());
    EXPECT_TRUE(header.Writev1v2Separate());
    EXPECT_EQ(header.TimeStyle(), OnlyFractions);
}

TEST(NewObject, LayerRaisesError91) {
    test::MemoryEnvironment world;
    const cMPEGHeader header(world.environment);
    try {
        (void)header.Layer();
        FAIL() << "nothing was raised";
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), 91);
        EXPECT_EQ(error.source(), u"Brindle");
    }
}

TEST(NewObject, SavingRaisesFileNameIsNotSet) {
    test::MemoryEnvironment world;
    cMPEGHeader header(world.environment);
    try {
        header.SaveAllInfo();
        FAIL() << "nothing was raised";
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), -896556);
        EXPECT_EQ(static_cast<std::uint32_t>(error.number()), 0xFFF251D4U);
        EXPECT_EQ(error.description(), u"FileName is Not set");
    }
}

TEST(LoadSequence, OnlyTheLastThreeCharactersDecide) {
    struct Name {
        const char16_t* name;
        bool loaded;
    };
    const Name names[] = {
        {u"track.MP3", true},  {u"track.mp3", true},
        {u"track.mP3", true},  {u"a.mp2", true},
        {u"a.MP2", true},      {u"xmp3", true},
        {u"mp3", true},        {u"track.wav", false},
        {u"track.mp", false},  {u"p3", false},
        {u"3", false},         {u"track.mp3 ", false},
        {u"track.mp4", false}, {u"track.mp3.bak", false},
    };
    for (const Name& row : names) {
        LoadedHeader loaded;
        std::vector<String> read;
        loaded.header.Reading = [&](const String& name) { read.push_back(name); };
        loaded.world.files.put(row.name, audio());
        loaded.header.FileName(row.name);
        EXPECT_EQ(loaded.header.FileName(), row.loaded ? String(row.name) : String())
            << to_utf8(row.name);
        EXPECT_EQ(loaded.header.Layer(), row.loaded ? u"3" : u"0") << to_utf8(row.name);
        EXPECT_EQ(loaded.world.files.calls(test::FileCall::Open), row.loaded ? 1U : 0U);
        EXPECT_TRUE(loaded.header.g_InUse());
        EXPECT_EQ(read, (std::vector<String>{row.name})) << to_utf8(row.name);
    }
}

TEST(LoadSequence, AnEmptyNameRaisesNoReadingAndRebuildsAnEmptyModel) {
    LoadedHeader loaded(Tag(3).text("TIT2", "Song").padded_to(300) + audio());
    int readings = 0;
    loaded.header.Reading = [&](const String&) { ++readings; };
    loaded.header.g_InUse(false);
    loaded.header.FileName(u"");
    EXPECT_EQ(readings, 0);
    EXPECT_TRUE(loaded.header.g_InUse());
    expect_empty(loaded.header);
    EXPECT_EQ(loaded.header.Genre(), u"0");
    EXPECT_EQ(loaded.header.CategoryLevel(), u"0");
    EXPECT_EQ(loaded.header.CustomFieldRetrieve(u"x"), Variant(String()));
    ASSERT_NE(loaded.header.v2Frames(), nullptr);
    EXPECT_EQ(loaded.header.v2Frames()->Count(), 0);
}

TEST(LoadSequence, AMissingFileIsAnEmptyObjectWithoutAnError) {
    LoadedHeader loaded;
    loaded.header.FileName(u"nothing.mp3");
    expect_empty(loaded.header);
    EXPECT_EQ(loaded.header.Layer(), u"0");
    EXPECT_TRUE(loaded.header.g_InUse());
}

TEST(LoadSequence, AFileThatCannotBeOpenedRaisesNothing) {
    LoadedHeader loaded;
    loaded.world.files.make_folder(u"folder.mp3");
    EXPECT_NO_THROW(loaded.header.FileName(u"folder.mp3"));
    EXPECT_EQ(loaded.header.Title(), u"");
    EXPECT_EQ(loaded.header.FileName(), u"folder.mp3") << "it exists, so its name is kept";
}

TEST(LoadSequence, TheSecondAssignmentDiscardsEditsMadeInBetween) {
    LoadedHeader loaded(Tag(3).text("TIT2", "Song").field("Intro", "5").padded_to(300) + audio() +
                        Id3v1{.title = "V1"}.bytes());
    loaded.header.Title(u"Edited");
    loaded.header.Intro(9);
    loaded.header.FileName(kSong);
    EXPECT_EQ(loaded.header.Title(), u"Song");
    EXPECT_EQ(loaded.header.Titlev1Tag(), u"V1");
    EXPECT_EQ(loaded.header.Intro(), 5);
}

TEST(LoadSequence, NothingOfThePreviousFileRemains) {
    LoadedHeader loaded(Tag(3).lyrics("eng", "", "La").text("TCON", "(179)").padded_to(300) +
                        audio());
    EXPECT_EQ(loaded.header.Genre(), u"17");
    loaded.header.OutromsStart(77);
    loaded.load(audio());
    EXPECT_EQ(loaded.header.Genre(), u"0");
    EXPECT_EQ(loaded.header.OutromsStart(), 0);
    EXPECT_EQ(loaded.header.FrameCount(), 0);
}

TEST(LoadSequence, FramesThatNoPropertyShowsAreNotLeftEither) {
    LoadedHeader loaded(Tag(3).frame("PRIV", "x").padded_to(300) + audio());
    EXPECT_EQ(loaded.header.FrameCount(), 1);
    loaded.load(audio());
    EXPECT_EQ(loaded.header.FrameCount(), 0);
}

TEST(Tags, TheirKindIsMinusOneForNone) {
    const Bytes v2 = Tag(3).text("TIT2", "A").padded_to(300).bytes();
    const Bytes v1 = Id3v1{.title = "V1"}.bytes();
    EXPECT_EQ(LoadedHeader(audio()).header.TagType(), kUntagged);
    EXPECT_EQ(LoadedHeader(audio() + v1).header.TagType(), v1TagOnly);
    EXPECT_EQ(LoadedHeader(v2 + audio()).header.TagType(), v2TagOnly);
    EXPECT_EQ(LoadedHeader(v2 + audio() + v1).header.TagType(), v1andv2TagsBothPresent);
}

TEST(Tags, TheSizeIncludesTheHeader) {
    EXPECT_EQ(LoadedHeader(Tag(3).padded_to(2048) + audio()).header.ID3TagSizeIncludingHeader(),
              2048);
}

TEST(Tags, RepairIsRequiredWhenAudioDoesNotBeginWhereTheTagEnds) {
    const Tag tag = Tag(3).text("TIT2", "A").padded_to(300);
    struct Layout {
        const char* name = "";
        Bytes file = {};
        bool required = false;
    };
    const Layout layouts[] = {
        {"tag and audio", tag + audio(), false},
        {"100 bytes of junk after the tag", tag.bytes() + test::zeros(100) + audio(), true},
        {"audio alone", audio(), false},
        {"junk before the audio", test::zeros(50) + audio(), true},
        {"tag without audio", tag + test::repeated(9000, 'x'), true},
        {"neither", test::repeated(9000, 'x'), false},
        {"a second tag counts as audio that is late",
         tag.bytes() + Tag(3).padded_to(300).bytes() + audio(), true},
    };
    for (const Layout& layout : layouts) {
        EXPECT_EQ(LoadedHeader(layout.file).header.RepairRequired(), layout.required)
            << layout.name;
    }
}

TEST(Tags, FrameCountKeepsItsLow16Bits) {
    // 40,000 ids are -25,536 in 16 bits.
    Bytes frames;
    for (int number = 0; number < 40000; ++number) {
        std::string id = "A000";
        int rest = number;
        for (std::size_t place = 3; place > 0; --place) {
            id[place] = static_cast<char>('0' + rest % 40);
            rest /= 40;
        }
        frames += Bytes(id) + test::big_endian(1, 4) + test::zeros(3);
    }
    const LoadedHeader loaded(Tag(3).raw(frames).padding(5000) + audio());
    EXPECT_EQ(loaded.header.v2Frames()->Count(), 40000);
    EXPECT_EQ(loaded.header.FrameCount(), -25536);
}

TEST(Stream, FactsAreThoseOfTheFrames) {
    const LoadedHeader loaded(stream(test::Frame{.mode = test::Mode::DualChannel}, 120));
    EXPECT_EQ(loaded.header.MonoStereo(), u"Mono");
    EXPECT_EQ(loaded.header.BitRate(), 128000);
    EXPECT_EQ(loaded.header.Frequency(), 44100);
    EXPECT_EQ(loaded.header.Layer(), u"3");
    EXPECT_EQ(loaded.header.MpegVersion(), u"1");
    EXPECT_FALSE(loaded.header.VBR());
}

}  // namespace
}  // namespace brindle
