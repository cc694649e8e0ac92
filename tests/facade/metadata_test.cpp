#include <cstdint>
#include <string_view>

#include <gtest/gtest.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/text.h>

#include "facade/loaded_header.h"

namespace brindle {
namespace {

using namespace std::string_view_literals;
using test::audio;
using test::Id3v1;
using test::LoadedHeader;
using test::Tag;

class Metadata : public testing::Test {
protected:
    LoadedHeader loaded{
        audio() +
        Id3v1{.title = " V1 title", .artist = "V1 artist", .year = "1985", .comment = "V1 comment"}
            .bytes()};
    cMPEGHeader& header = loaded.header;
};

TEST_F(Metadata, TitleArtistAndYearAlsoSetTheRecord) {
    header.Title(u"T");
    header.Artist(u"A");
    header.Year(1999);
    EXPECT_EQ(header.Title(), u"T");
    EXPECT_EQ(header.Titlev1Tag(), u"T");
    EXPECT_EQ(header.Artist(), u"A");
    EXPECT_EQ(header.artistv1Tag(), u"A");
    EXPECT_EQ(header.Year(), 1999);
    EXPECT_EQ(header.v2Tag(u"TYER", 1), u"1999");
    EXPECT_EQ(header.Yearv1Tag(), 1999);
}

TEST_F(Metadata, WrittenSeparatelyTheyLeaveTheRecord) {
    header.Writev1v2Separate(true);
    header.Title(u"T");
    header.Artist(u"A");
    header.Year(1999);
    EXPECT_EQ(header.v2Tag(u"TYER", 1), u"1999");
    EXPECT_EQ(header.Titlev1Tag(), u"V1 title");
    EXPECT_EQ(header.artistv1Tag(), u"V1 artist");
    EXPECT_EQ(header.Yearv1Tag(), 1985);
}

TEST_F(Metadata, OtherAssignmentsNeverTouchTheRecord) {
    header.Song(u"S");
    header.Album(u"B");
    header.Comments(u"C");
    header.Genre(u"17");
    header.Track(3);
    EXPECT_EQ(header.Title(), u"S");
    EXPECT_EQ(header.Titlev1Tag(), u"V1 title");
    EXPECT_EQ(header.Commentv1(), u"V1 comment");
    EXPECT_EQ(header.Yearv1Tag(), 1985);
}

TEST_F(Metadata, TheRecordsOwnMembersLeaveTheTag) {
    header.Titlev1Tag(u"  a b  ");
    header.artistv1Tag(u"  c  ");
    header.Yearv1Tag(-5);
    header.Commentv1(u"  d  ");
    EXPECT_EQ(header.Titlev1Tag(), u"a b");
    EXPECT_EQ(header.artistv1Tag(), u"c");
    EXPECT_EQ(header.Yearv1Tag(), -5);
    EXPECT_EQ(header.Commentv1(), u"d") << "the record's text is trimmed below";
    EXPECT_EQ(header.Title(), u"");
    EXPECT_EQ(header.FrameCount(), 0);
}

TEST_F(Metadata, URLAndArtistUrlAreOne) {
    header.URL(u"http://a");
    EXPECT_EQ(header.ArtistUrl(), u"http://a");
    header.ArtistUrl(u"http://b");
    EXPECT_EQ(header.URL(), u"http://b");
    EXPECT_EQ(header.v2Tag(u"WOAR", 1), u"http://b");
}

TEST_F(Metadata, TextPropertiesAreKeptInTheirFrames) {
    header.Album(u"a");
    header.Comments(u"b");
    header.Composer(u"c");
    header.Publisher(u"d");
    header.CopyRight(u"e");
    header.Track(-7);
    EXPECT_EQ(header.v2Tag(u"TALB", 1), u"a");
    EXPECT_EQ(header.v2Tag(u"COMM", 1), u"\0nt\0b"sv);
    EXPECT_EQ(header.v2Tag(u"TCOM", 1), u"c");
    EXPECT_EQ(header.v2Tag(u"TPUB", 1), u"d");
    EXPECT_EQ(header.v2Tag(u"TCOP", 1), u"e");
    EXPECT_EQ(header.v2Tag(u"TRCK", 1), u"-7");
    EXPECT_EQ(header.Album(), u"a");
    EXPECT_EQ(header.Comments(), u"b");
    EXPECT_EQ(header.Composer(), u"c");
    EXPECT_EQ(header.Publisher(), u"d");
    EXPECT_EQ(header.CopyRight(), u"e");
    EXPECT_EQ(header.Track(), -7);
}

struct GenreCase {
    const char16_t* assigned;
    const char16_t* read;
};

TEST_F(Metadata, AGenreIsANumberOfOneByte) {
    const GenreCase cases[] = {
        {u"0", u"0"},     {u"17", u"17"},   {u"Blues", u"17"},  {u"", u"17"},
        {u"256", u"17"},  {u"-1", u"17"},   {u"17.4", u"17"},   {u"255", u"255"},
        {u"17.5", u"18"}, {u"16.5", u"16"}, {u"255.4", u"255"}, {u"255.5", u"255"},
        {u"-0.5", u"0"},  {u" 8 ", u"8"},   {u"1e1", u"10"},    {u"(17)", u"10"},
    };
    for (const GenreCase& row : cases) {
        header.Genre(row.assigned);
        EXPECT_EQ(header.Genre(), row.read) << to_utf8(row.assigned);
    }
    EXPECT_EQ(header.v2Tag(u"TCON", 1), u"(10)");
}

TEST_F(Metadata, AGenreThatIsNotAssignedAddsNoFrame) {
    header.Genre(u"Blues");
    EXPECT_EQ(header.FrameCount(), 0);
    EXPECT_EQ(header.Genre(), u"0");
}

// The record's own cleaning removes blanks before NULs, so blanks in front of NULs stay; of title
// and artist they go here.
TEST(MetadataOfATag, TitleAndArtistOfARecordReadWithoutBlanks) {
    test::LoadedHeader loaded(
        test::audio() +
        test::Id3v1{.title = "Hello  ", .artist = "Duo ", .comment = "Note "}.bytes());
    EXPECT_EQ(loaded.header.Titlev1Tag(), u"Hello");
    EXPECT_EQ(loaded.header.artistv1Tag(), u"Duo");
    EXPECT_EQ(loaded.header.Commentv1(), u"Note ");
}

TEST(MetadataOfATag, StoredTextReadsAsANumberOr0) {
    struct Stored {
        const char* text;
        std::int16_t number;
    };
    const Stored stored[] = {
        {"3", 3},      {"3/12", 0},    {"", 0},          {"abc", 0},   {" 7", 7},
        {"2.5", 2},    {"3.5", 4},     {"32767", 32767}, {"32768", 0}, {"-32768", -32768},
        {"1e3", 1000}, {"1999-05", 0}, {"+4", 4},        {"0x1F", 0},
    };
    for (const Stored& row : stored) {
        const LoadedHeader loaded(
            Tag(3).text("TRCK", row.text).text("TYER", row.text).padded_to(300) + audio());
        EXPECT_EQ(loaded.header.Track(), row.number) << row.text;
        EXPECT_EQ(loaded.header.Year(), row.number) << row.text;
    }
}

TEST(MetadataOfATag, TheYearOfARecordReadsAsANumberOr0) {
    for (const auto& [text, year] :
         {std::pair{"1999", 1999}, {"19xx", 0}, {"", 0}, {" 85", 85}, {"9.5", 10}}) {
        const LoadedHeader loaded(audio() + Id3v1{.year = text}.bytes());
        EXPECT_EQ(loaded.header.Yearv1Tag(), year) << text;
    }
}

TEST_F(Metadata, AnOpenerIsMinusOneOrZero) {
    for (const std::int32_t value : {5, -1, 1, -2147483647}) {
        header.Opener(value);
        EXPECT_EQ(header.Opener(), -1);
        EXPECT_EQ(header.CustomFieldRetrieve(u"Opener"), Variant(String(u"-1")));
    }
    header.Opener(0);
    EXPECT_EQ(header.Opener(), 0);
    EXPECT_EQ(header.CustomFieldRetrieve(u"Opener"), Variant(String(u"0")));
}

TEST_F(Metadata, SchedulingFieldsAreKeptUnderTheirNames) {
    header.Speed(0.95);
    header.Volume(-3);
    header.CueInmSStart(1);
    header.Sectone(2);
    header.CategoryLevel(u"7");
    header.Agency(u"a");
    header.AccountExec(u"b");
    header.Copy(u"c");
    header.Endstyle(u"d");
    header.Category(String(u"e"));
    header.NoFade(-1);
    header.Intro(12345678);
    header.OutromsStart(-12345678);
    const std::pair<const char16_t*, const char16_t*> fields[] = {
        {u"TarnSpeed", u"0.95"},
        {u"Volume", u"-3"},
        {u"Cue In", u"1"},
        {u"Sec Tone", u"2"},
        {u"CatLevel", u"7"},
        {u"Agency", u"a"},
        {u"Account Exec", u"b"},
        {u"Copy", u"c"},
        {u"End", u"d"},
        {u"Category", u"e"},
        {u"NoFade", u"-1"},
        {u"Intro", u"12345678"},
        {u"OutromSStart", u"-12345678"},
    };
    for (const auto& [name, value] : fields) {
        EXPECT_TRUE(header.CustomFieldExists(name)) << to_utf8(name);
        EXPECT_EQ(header.CustomFieldRetrieve(name), Variant(String(value))) << to_utf8(name);
    }
    EXPECT_EQ(header.Speed(), 0.95);
    EXPECT_EQ(header.Volume(), -3);
    EXPECT_EQ(header.CueInmSStart(), 1);
    EXPECT_EQ(header.Sectone(), 2);
    EXPECT_EQ(header.CategoryLevel(), u"7");
    EXPECT_EQ(header.Agency(), u"a");
    EXPECT_EQ(header.AccountExec(), u"b");
    EXPECT_EQ(header.Copy(), u"c");
    EXPECT_EQ(header.Endstyle(), u"d");
    EXPECT_EQ(header.Category(), Variant(String(u"e")));
    EXPECT_EQ(header.NoFade(), -1);
    EXPECT_EQ(header.Intro(), 12345678);
    EXPECT_EQ(header.OutromsStart(), -12345678);
    EXPECT_EQ(header.TagsInFrame(u"TXXX"), 14) << "thirteen and the stamp";
}

TEST_F(Metadata, ACategoryLevelThatIsNoIntegerIsNotAssigned) {
    header.CategoryLevel(u"3");
    for (const char16_t* text : {u"abc", u"", u"32768", u"-32769", u"3/4"}) {
        header.CategoryLevel(text);
        EXPECT_EQ(header.CategoryLevel(), u"3") << to_utf8(text);
    }
    header.CategoryLevel(u"2.5");
    EXPECT_EQ(header.CategoryLevel(), u"2");
}

TEST_F(Metadata, StoredTimesReadAsNumbersOr0) {
    struct Stored {
        const char16_t* text;
        std::int32_t as_long;
        std::int16_t as_integer;
    };
    const Stored stored[] = {
        {u"12.5", 12, 12},    {u"13.5", 14, 14},
        {u"abc", 0, 0},       {u"", 0, 0},
        {u"70000", 70000, 0}, {u"2147483648", 0, 0},
        {u"-0.5", 0, 0},      {u"2147483647.4", 2147483647, 0},
        {u"1e3", 1000, 1000},
    };
    for (const Stored& row : stored) {
        for (const char16_t* name : {u"Intro", u"OutromSStart", u"NoFade"}) {
            header.CustomFieldAdd(name, String(row.text));
        }
        EXPECT_EQ(header.Intro(), row.as_long) << to_utf8(row.text);
        EXPECT_EQ(header.OutromsStart(), row.as_long) << to_utf8(row.text);
        EXPECT_EQ(header.NoFade(), row.as_integer) << to_utf8(row.text);
    }
}

TEST_F(Metadata, AbsentFieldsAreEmptyTextAndTheCategoryEmpty) {
    EXPECT_EQ(header.Category(), Variant(Empty{}));
    EXPECT_EQ(header.CustomFieldRetrieve(u"Category"), Variant(String()));
    EXPECT_FALSE(header.CustomFieldExists(u"Category"));
    header.Category(Empty{});
    EXPECT_EQ(header.Category(), Variant(String()));
    EXPECT_TRUE(header.CustomFieldExists(u"Category"));
}

TEST_F(Metadata, ValuesOfAnyTypeAreStoredAsTheirText) {
    const std::pair<Variant, const char16_t*> values[] = {
        {Empty{}, u""},
        {true, u"-1"},
        {false, u"0"},
        {std::int16_t{-32768}, u"-32768"},
        {std::int32_t{2147483647}, u"2147483647"},
        {0.1, u"0.1"},
        {1e20, u"100000000000000000000"},
        {-2.0, u"-2"},
        {String(u"text"), u"text"},
    };
    for (const auto& [value, text] : values) {
        header.CustomFieldAdd(u"field", value);
        EXPECT_EQ(header.CustomFieldRetrieve(u"field"), Variant(String(text)));
        header.Category(value);
        EXPECT_EQ(header.Category(), Variant(String(text)));
    }
    EXPECT_EQ(header.TagsInFrame(u"TXXX"), 3) << "the stamp and one of each";
}

TEST_F(Metadata, CustomFieldNamesAreComparedExactly) {
    header.CustomFieldAdd(u"Agency", String(u"x"));
    EXPECT_EQ(header.Agency(), u"x");
    EXPECT_FALSE(header.CustomFieldExists(u"agency"));
    EXPECT_EQ(header.CustomFieldRetrieve(u"agency"), Variant(String()));
}

TEST_F(Metadata, TheListOfFramesIsHandedOutAsItIs) {
    header.Title(u"T");
    const auto frames = header.v2Frames();
    EXPECT_EQ(frames->Count(), 1);
    EXPECT_EQ(frames->Item(1), Variant(String(u"TIT2")));
    header.Album(u"A");
    EXPECT_EQ(frames->Count(), 2);
    EXPECT_EQ(frames->Item(u"TALB"), Variant(String(u"TALB")));
    EXPECT_EQ(header.v2Frames(), frames);
}

TEST(FrameListOfAHost, StaysValidAfterReloadAndAfterTheObjectIsDestroyed) {
    std::shared_ptr<KeyedCollection> frames;
    {
        LoadedHeader loaded(Tag(3).text("TIT2", "A").text("TPE1", "B").padded_to(300) + audio());
        frames = loaded.header.v2Frames();
        loaded.load(audio());
        EXPECT_NE(loaded.header.v2Frames(), frames);
        EXPECT_EQ(frames->Count(), 2);
    }
    EXPECT_EQ(frames->Count(), 2);
    EXPECT_EQ(frames->Item(2), Variant(String(u"TPE1")));
}

TEST(FrameListOfAHost, ARemovedEntryLeavesItsValuesUntilTheListIsReadAgain) {
    LoadedHeader loaded(Tag(3).text("TIT2", "A").text("TPE1", "B").padded_to(300) + audio());
    loaded.header.v2Frames()->Remove(u"TIT2");
    EXPECT_EQ(loaded.header.FrameCount(), 1);
    EXPECT_EQ(loaded.header.Title(), u"A");
    EXPECT_EQ(loaded.header.v2Tag(u"TIT2", 1), u"A");
    EXPECT_EQ(loaded.header.TagsInFrame(u"TIT2"), 1);
    // The frame is not listed, so nothing is removed; its value's number is taken.
    loaded.header.Song(u"C");
    EXPECT_EQ(loaded.header.Title(), u"C");
    EXPECT_EQ(loaded.header.v2Tag(u"TIT2", 1), u"A");
    EXPECT_EQ(loaded.header.FrameCount(), 2);
}

TEST(FrameListOfAHost, EntriesOfTheHostsOwnAreHarmless) {
    LoadedHeader loaded(Tag(3).text("TIT2", "A").padded_to(300) + audio());
    const auto frames = loaded.header.v2Frames();
    frames->Add(std::int32_t{42}, u"TALB");
    frames->Add(Empty{}, u"TXXX");
    EXPECT_EQ(loaded.header.FrameCount(), 3);
    EXPECT_EQ(loaded.header.v2Tag(u"TALB", 1), u"");
    loaded.header.Album(u"B");
    EXPECT_EQ(loaded.header.v2Tag(u"TALB", 1), u"B");
    loaded.header.CueInmSStart(5);
    EXPECT_EQ(loaded.header.CueInmSStart(), 5);
}

}  // namespace
}  // namespace brindle
