#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/error.h>
#include <brindle/text.h>

#include "id3v2/opened_model.h"
#include "util/host.h"

namespace brindle {
namespace {

using namespace std::string_view_literals;
using test::audio;
using test::OpenedModel;
using test::Tag;

String wide(std::u16string_view text) {
    return String(text);
}

class Messages : public Host {
public:
    void RaiseScanningEvent(const String&, std::int32_t, std::int32_t, bool&) override {}
    void yield() override {}
    void show_message(const String& text) override { shown.push_back(text); }

    std::vector<String> shown;
};

class FrameOperations : public testing::Test {
protected:
    test::MemoryEnvironment world;
    cMP3ID3v2 model{world.environment};
    Messages messages;

    void SetUp() override { model.Owner = &messages; }
    void add(const String& frame, std::initializer_list<std::u16string_view> values) {
        for (const auto value : values) {
            model.AddTag(frame, wide(value));
        }
    }
};

TEST_F(FrameOperations, ThreeCommentsAreCountedAndNumbered) {
    add(u"COMM", {u"a", u"b", u"c"});
    EXPECT_EQ(model.TagsInFrame(u"COMM"), 3);
    EXPECT_EQ(model.FrameCount(), 1);
    EXPECT_EQ(model.Frame(1), u"COMM");
    EXPECT_EQ(model.Tag(u"COMM", 1), u"a");
    EXPECT_EQ(model.Tag(u"COMM", 3), u"c");
}

TEST_F(FrameOperations, PositionsCountFrom1InTheOrderFirstSeen) {
    add(u"TALB", {u"1"});
    add(u"TIT2", {u"2"});
    add(u"TALB", {u"3"});
    EXPECT_EQ(model.Frame(0), u"");
    EXPECT_EQ(model.Frame(-1), u"");
    EXPECT_EQ(model.Frame(1), u"TALB");
    EXPECT_EQ(model.Frame(2), u"TIT2");
    EXPECT_EQ(model.Frame(3), u"");
}

TEST_F(FrameOperations, AMissingValueIsEmptyAndRecordsError455) {
    add(u"TIT2", {u""});
    EXPECT_EQ(model.Tag(u"TIT2", 1), u"");
    EXPECT_EQ(model.LastError(), 0);
    EXPECT_EQ(model.Tag(u"TIT2", 2), u"");
    EXPECT_EQ(model.LastError(), 455);
    EXPECT_EQ(model.Tag(u"TALB", 1), u"");
    EXPECT_EQ(model.LastError(), 455);
    EXPECT_EQ(model.TagsInFrame(u"TALB"), 0);
}

TEST_F(FrameOperations, KeysAreComparedExactly) {
    add(u"TIT2", {u"A"});
    EXPECT_EQ(model.TagsInFrame(u"tit2"), 0);
    EXPECT_EQ(model.Tag(u"tit2", 1), u"");
    model.RemoveFrame(u"tit2");
    EXPECT_EQ(model.TagsInFrame(u"TIT2"), 1);
}

TEST_F(FrameOperations, AnIndexIsIgnoredForANewFrame) {
    model.AddTag(u"COMM", u"a", 7);
    EXPECT_EQ(model.Tag(u"COMM", 1), u"a");
    EXPECT_EQ(model.TagsInFrame(u"COMM"), 1);
}

TEST_F(FrameOperations, AValueAtAnIndexLeavesTheCount) {
    add(u"TXXX", {u"x"});
    add(u"COMM", {u"a"});
    model.AddTag(u"COMM", u"b", 5);
    EXPECT_EQ(model.TagsInFrame(u"COMM"), 1);
    EXPECT_EQ(model.Tag(u"COMM", 5), u"b");
    EXPECT_EQ(model.Tag(u"COMM", 2), u"");
    // A number in use is an error that is not reported.
    model.AddTag(u"COMM", u"c", 5);
    EXPECT_EQ(model.Tag(u"COMM", 5), u"b");
}

TEST_F(FrameOperations, RemoveTagAlwaysRaisesAndRemovesNothing) {
    add(u"COMM", {u"a", u"b", u"c"});
    for (const std::int32_t index : {1, 2, 0, 9}) {
        try {
            model.RemoveTag(u"COMM", index);
            FAIL() << "nothing was raised";
        } catch (const Error& error) {
            EXPECT_EQ(error.number(), 13);
            EXPECT_EQ(error.description(), u"Type mismatch");
            EXPECT_EQ(error.source(), u"BrindleID3v2Tagger");
        }
    }
    EXPECT_EQ(model.TagsInFrame(u"COMM"), 3);
    EXPECT_EQ(model.Tag(u"COMM", 1), u"a");
    EXPECT_EQ(model.Tag(u"COMM", 2), u"b");
    EXPECT_EQ(model.Tag(u"COMM", 3), u"c");
}

TEST_F(FrameOperations, ACustomFrameIsRemovedByItsDescription) {
    add(u"TXXX", {u"Intro\0"
                  u"1"sv,
                  u"Cue In\0"
                  u"1500"sv,
                  u"End\0x"sv});
    std::int32_t index = 99;
    model.RemoveFrame(u"TXXX", u"Cue In", index);
    EXPECT_EQ(index, 2);
    EXPECT_EQ(model.Tag(u"TXXX", 1),
              u"Intro\0"
              u"1"sv);
    EXPECT_EQ(model.Tag(u"TXXX", 2), u"");
    EXPECT_EQ(model.LastError(), 455);
    EXPECT_EQ(model.Tag(u"TXXX", 3), u"End\0x"sv);
    EXPECT_EQ(model.TagsInFrame(u"TXXX"), 3) << "its place is kept for the next value";
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(FrameOperations, ADescriptionInOtherCaseIsNotFound) {
    add(u"TXXX", {u"Intro\0"
                  u"1"sv,
                  u"Cue In\0"
                  u"1500"sv});
    std::int32_t index = 99;
    model.RemoveFrame(u"TXXX", u"cue in", index);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(model.Tag(u"TXXX", 2),
              u"Cue In\0"
              u"1500"sv);
}

TEST_F(FrameOperations, TheSearchForADescriptionEndsAtAGapAndSkipsValuesWithoutNul) {
    add(u"TXXX", {u"plain",
                  u"a\0"
                  u"1"sv,
                  u"b\0"
                  u"2"sv,
                  u"c\0"
                  u"3"sv});
    std::int32_t index = 0;
    model.RemoveFrame(u"TXXX", u"plain", index);
    EXPECT_EQ(index, 0) << "no NUL, no description";
    model.RemoveFrame(u"TXXX", u"b", index);
    EXPECT_EQ(index, 3);
    model.RemoveFrame(u"TXXX", u"c", index);
    EXPECT_EQ(index, 0) << "it is after the gap";
    model.RemoveFrame(u"TXXX", u"a", index);
    EXPECT_EQ(index, 2);
}

TEST_F(FrameOperations, RemovingCustomFramesWithoutATitleShowsAMessageAndRemovesAll) {
    add(u"TXXX", {u"a\0"
                  u"1"sv,
                  u"b\0"
                  u"2"sv});
    add(u"TIT2", {u"A"});
    std::int32_t index = 2;
    model.RemoveFrame(u"TXXX", u"", index);
    EXPECT_EQ(messages.shown,
              (std::vector<String>{u"You need to send a CustomFrameTitle to perform this!"}));
    EXPECT_EQ(model.TagsInFrame(u"TXXX"), 0);
    EXPECT_EQ(model.Tag(u"TXXX", 1), u"");
    EXPECT_EQ(model.FrameCount(), 1);
    EXPECT_EQ(model.Frame(1), u"TIT2");
}

TEST_F(FrameOperations, TheMessageComesEvenWhenThereIsNothingToRemove) {
    model.RemoveFrame(u"TXXX");
    EXPECT_EQ(messages.shown.size(), 1U);
}

TEST_F(FrameOperations, WithoutAnOwnerNoMessageIsShown) {
    model.Owner = nullptr;
    add(u"TXXX", {u"a\0"
                  u"1"sv});
    model.RemoveFrame(u"TXXX");
    EXPECT_EQ(model.FrameCount(), 0);
}

TEST_F(FrameOperations, AFrameIsRemovedWithAllItsValues) {
    add(u"COMM", {u"a", u"b", u"c"});
    model.RemoveFrame(u"COMM");
    EXPECT_EQ(model.TagsInFrame(u"COMM"), 0);
    EXPECT_EQ(model.FrameCount(), 0);
    add(u"COMM", {u"d"});
    EXPECT_EQ(model.Tag(u"COMM", 1), u"d");
    EXPECT_EQ(model.Tag(u"COMM", 2), u"");
}

TEST_F(FrameOperations, ValuesAfterAGapOutliveTheirFrame) {
    add(u"TXXX", {u"a\0"
                  u"1"sv,
                  u"b\0"
                  u"2"sv,
                  u"c\0"
                  u"3"sv});
    model.RemoveFrame(u"TXXX", u"b");
    model.RemoveFrame(u"TXXX");
    EXPECT_EQ(model.FrameCount(), 0);
    EXPECT_EQ(model.Tag(u"TXXX", 1), u"");
    EXPECT_EQ(model.Tag(u"TXXX", 3),
              u"c\0"
              u"3"sv);
}

TEST_F(FrameOperations, AnIncomingIndexCountsForOtherFrames) {
    add(u"COMM", {u"a", u"b", u"c"});
    std::int32_t index = 2;
    model.RemoveFrame(u"COMM", u"ignored", index);
    EXPECT_EQ(index, 2);
    EXPECT_EQ(model.Tag(u"COMM", 1), u"a");
    EXPECT_EQ(model.Tag(u"COMM", 2), u"");
    EXPECT_EQ(model.Tag(u"COMM", 3), u"c");
    EXPECT_EQ(model.TagsInFrame(u"COMM"), 3);
}

TEST_F(FrameOperations, RemovingTheLastValueRemovesItsFrame) {
    add(u"COMM", {u"a"});
    std::int32_t index = 1;
    model.RemoveFrame(u"COMM", u"", index);
    EXPECT_EQ(model.FrameCount(), 0);
    EXPECT_EQ(model.TagsInFrame(u"COMM"), 0);
}

TEST_F(FrameOperations, EmptyValuesDoNotKeepTheirFrame) {
    add(u"COMM", {u"a", u""});
    std::int32_t index = 1;
    model.RemoveFrame(u"COMM", u"", index);
    EXPECT_EQ(model.FrameCount(), 0);
    EXPECT_EQ(model.Tag(u"COMM", 2), u"");
    EXPECT_EQ(model.LastError(), 0) << "it is still there";
}

// Values are looked for up to the number of values of all frames together: with two left, not up
// to the third.
TEST_F(FrameOperations, AValueBeyondTheNumberOfAllValuesDoesNotKeepItsFrame) {
    add(u"COMM", {u"a", u"b", u"c"});
    for (std::int32_t index : {1, 2}) {
        model.RemoveFrame(u"COMM", u"", index);
    }
    EXPECT_EQ(model.FrameCount(), 0);
    EXPECT_EQ(model.Tag(u"COMM", 3), u"c");
    add(u"TIT2", {u"1"});
    add(u"COMM", {u"d"});
    EXPECT_EQ(model.Tag(u"COMM", 1), u"d");
    EXPECT_EQ(model.TagsInFrame(u"COMM"), 1);
}

TEST_F(FrameOperations, AnAbsentIndexRemovesNothing) {
    add(u"COMM", {u"a"});
    std::int32_t index = 5;
    model.RemoveFrame(u"COMM", u"", index);
    EXPECT_EQ(model.TagsInFrame(u"COMM"), 1);
    EXPECT_EQ(model.Tag(u"COMM", 1), u"a");
}

TEST_F(FrameOperations, TheEmptyIdIsAnOrdinaryKeyButNeverListedForAdding) {
    add(u"", {u"a", u"b"});
    EXPECT_EQ(model.FrameCount(), 1);
    EXPECT_EQ(model.Frame(1), u"");
    EXPECT_EQ(model.TagsInFrame(u""), 1) << "its entry reads empty, so it counts as new each time";
    EXPECT_EQ(model.Tag(u"", 1), u"a");
    EXPECT_EQ(model.Tag(u"", 2), u"");
}

// --- The standard properties.

struct Property {
    const char* name;
    void (cMP3ID3v2::*set)(const String&);
    String (cMP3ID3v2::*get)() const;
    const char16_t* frame;
    std::u16string_view held_prefix;
    bool nuls_removed;
};

// clang-format off
const Property kProperties[] = {
    {"ArtistUrl",      &cMP3ID3v2::ArtistUrl,      &cMP3ID3v2::ArtistUrl,      u"WOAR", u"",           false},
    {"BuyURL",         &cMP3ID3v2::BuyURL,         &cMP3ID3v2::BuyURL,         u"WCOM", u"",           false},
    {"AudioURL",       &cMP3ID3v2::AudioURL,       &cMP3ID3v2::AudioURL,       u"WOAF", u"",           false},
    {"CopyRight",      &cMP3ID3v2::CopyRight,      &cMP3ID3v2::CopyRight,      u"TCOP", u"",           false},
    {"Composer",       &cMP3ID3v2::Composer,       &cMP3ID3v2::Composer,       u"TCOM", u"",           false},
    {"OriginalArtist", &cMP3ID3v2::OriginalArtist, &cMP3ID3v2::OriginalArtist, u"TOPE", u"",           false},
    {"LinkTo",         &cMP3ID3v2::LinkTo,         &cMP3ID3v2::LinkTo,         u"WXXX", u"\0"sv,       false},
    {"PlayCounter",    &cMP3ID3v2::PlayCounter,    &cMP3ID3v2::PlayCounter,    u"PCNT", u"",           false},
    {"EncodedBy",      &cMP3ID3v2::EncodedBy,      &cMP3ID3v2::EncodedBy,      u"TENC", u"",           false},
    {"Title",          &cMP3ID3v2::Title,          &cMP3ID3v2::Title,          u"TIT2", u"",           true},
    {"Artist",         &cMP3ID3v2::Artist,         &cMP3ID3v2::Artist,         u"TPE1", u"",           true},
    {"Album",          &cMP3ID3v2::Album,          &cMP3ID3v2::Album,          u"TALB", u"",           true},
    {"Year",           &cMP3ID3v2::Year,           &cMP3ID3v2::Year,           u"TYER", u"",           false},
    {"Comment",        &cMP3ID3v2::Comment,        &cMP3ID3v2::Comment,        u"COMM", u"\0nt\0"sv,   true},
    {"Lyrics",         &cMP3ID3v2::Lyrics,         &cMP3ID3v2::Lyrics,         u"USLT", u"\0"sv,       false},
    {"OtherGenreName", &cMP3ID3v2::OtherGenreName, &cMP3ID3v2::OtherGenreName, u"TCON", u"(0)",        false},
    {"Track",          &cMP3ID3v2::Track,          &cMP3ID3v2::Track,          u"TRCK", u"",           false},
    {"Publisher",      &cMP3ID3v2::Publisher,      &cMP3ID3v2::Publisher,      u"TPUB", u"",           false},
};
// clang-format on

TEST(StandardProperties, EachSetsItsFrameInItsFormAndReadsItsText) {
    for (const Property& property : kProperties) {
        test::MemoryEnvironment world;
        cMP3ID3v2 model(world.environment);
        (model.*property.set)(u"value");
        EXPECT_EQ((model.*property.get)(), u"value") << property.name;
        EXPECT_EQ(model.FrameCount(), 1) << property.name;
        EXPECT_EQ(model.Frame(1), property.frame) << property.name;
        EXPECT_EQ(model.TagsInFrame(property.frame), 1) << property.name;
        EXPECT_EQ(model.Tag(property.frame, 1), wide(property.held_prefix) + u"value")
            << property.name;
        for (const Property& other : kProperties) {
            if (&other != &property) {
                EXPECT_EQ((model.*other.get)(), u"") << property.name << ' ' << other.name;
            }
        }
    }
}

TEST(StandardProperties, SomeReadWithoutTheirNuls) {
    for (const Property& property : kProperties) {
        test::MemoryEnvironment world;
        cMP3ID3v2 model(world.environment);
        (model.*property.set)(wide(u"A\0B"sv));
        EXPECT_EQ((model.*property.get)(), property.nuls_removed ? wide(u"AB") : wide(u"A\0B"sv))
            << property.name;
        EXPECT_EQ(model.Tag(property.frame, 1), wide(property.held_prefix) + wide(u"A\0B"sv))
            << property.name;
    }
}

TEST(StandardProperties, AnEmptyValueIsAValue) {
    for (const Property& property : kProperties) {
        test::MemoryEnvironment world;
        cMP3ID3v2 model(world.environment);
        (model.*property.set)(u"value");
        (model.*property.set)(u"");
        EXPECT_EQ((model.*property.get)(), u"") << property.name;
        EXPECT_EQ(model.TagsInFrame(property.frame), 1) << property.name;
        EXPECT_EQ(model.Tag(property.frame, 1), property.held_prefix) << property.name;
    }
}

TEST(StandardProperties, AnAssignmentReplacesAllValuesOfItsFrame) {
    for (const Property& property : kProperties) {
        test::MemoryEnvironment world;
        cMP3ID3v2 model(world.environment);
        for (const char16_t* value : {u"a", u"b", u"c"}) {
            model.AddTag(property.frame, value);
        }
        model.AddTag(u"LAST", u"x");
        EXPECT_EQ((model.*property.get)(), u"") << "frames by hand leave it alone";
        (model.*property.set)(u"new");
        EXPECT_EQ(model.TagsInFrame(property.frame), 1) << property.name;
        EXPECT_EQ(model.Tag(property.frame, 2), u"") << property.name;
        EXPECT_EQ(model.Frame(2), property.frame) << "it moves to the end";
        model.RemoveFrame(property.frame);
        EXPECT_EQ((model.*property.get)(), u"new") << "frames by hand leave it alone";
    }
}

TEST(StandardProperties, GenreNumberAndNameShareOneFrame) {
    test::MemoryEnvironment world;
    cMP3ID3v2 model(world.environment);
    model.Genre(17);
    EXPECT_EQ(model.Tag(u"TCON", 1), u"(17)");
    model.OtherGenreName(u"Lo-Fi Mix");
    EXPECT_EQ(model.Tag(u"TCON", 1), u"(17)Lo-Fi Mix");
    EXPECT_EQ(model.Genre(), 17);
    EXPECT_EQ(model.OtherGenreName(), u"Lo-Fi Mix");

    cMP3ID3v2 reversed(world.environment);
    reversed.OtherGenreName(u"Lo-Fi Mix");
    EXPECT_EQ(reversed.Tag(u"TCON", 1), u"(0)Lo-Fi Mix");
    reversed.Genre(17);
    EXPECT_EQ(reversed.Tag(u"TCON", 1), u"(17)Lo-Fi Mix");
    EXPECT_EQ(reversed.TagsInFrame(u"TCON"), 1);
    reversed.Genre(255);
    EXPECT_EQ(reversed.Genre(), 255);
    EXPECT_EQ(reversed.Tag(u"TCON", 1), u"(255)Lo-Fi Mix");
}

TEST(StandardProperties, GenreNamesAreThoseOfTheTable) {
    test::MemoryEnvironment world;
    const cMP3ID3v2 model(world.environment);
    EXPECT_EQ(model.GenreName(0), u"Blues");
    EXPECT_EQ(model.GenreName(147), u"Synth Pop");
    EXPECT_EQ(model.GenreName(123), u"");
    EXPECT_EQ(model.GenreName(255), u"");
}

TEST(StandardProperties, AStoredTitleWithANulReadsRunTogether) {
    OpenedModel opened(Tag(3).frame("TIT2", "\0A\0B"sv).padded_to(300) + audio());
    EXPECT_EQ(opened.model.Title(), u"AB");
}

TEST(StandardProperties, ACommentReadFromAFileIsReplacedAsAWhole) {
    OpenedModel opened(Tag(3).comment("eng", "", "Hi").comment("eng", "", "Ho").padded_to(300) +
                       audio());
    EXPECT_EQ(opened.model.Comment(), u"engHi\r\nengHo");
    opened.model.Comment(u"x");
    EXPECT_EQ(opened.model.Comment(), u"x");
    EXPECT_EQ(opened.model.TagsInFrame(u"COMM"), 1);
    EXPECT_EQ(opened.model.Tag(u"COMM", 1), u"\0nt\0x"sv);
}

// --- Custom and radio fields.

class RadioFields : public testing::Test {
protected:
    OpenedModel opened{audio()};
    cMP3ID3v2& model = opened.model;

    void store(const String& name, const String& value) { model.AddCustomField(name, value); }
};

constexpr std::u16string_view kStamp = u"TAGGED BY\0CorvaneTagger - Revised Feb 2011"sv;

TEST(RadioFieldsWithoutAFile, NothingIsSet) {
    test::MemoryEnvironment world;
    cMP3ID3v2 model(world.environment);
    model.CueIn(1500);
    model.AddCustomField(u"a", u"b");
    EXPECT_EQ(model.CueIn(), 0);
    EXPECT_EQ(model.FrameCount(), 0);
    EXPECT_FALSE(model.CustomFieldExists(u"a"));
}

TEST_F(RadioFields, TheFirstFieldStampsTheTag) {
    model.CueIn(1500);
    EXPECT_EQ(model.TagsInFrame(u"TXXX"), 2);
    EXPECT_EQ(model.Tag(u"TXXX", 1), kStamp);
    EXPECT_EQ(model.Tag(u"TXXX", 2),
              u"Cue In\0"
              u"1500"sv);
    EXPECT_FALSE(model.CustomFieldExists(u"TAGGED BY")) << "the stamp is a frame only";
    EXPECT_EQ(model.GetCustomField(u"TAGGED BY"), u"");
    model.CueIn(2000);
    EXPECT_EQ(model.TagsInFrame(u"TXXX"), 2);
    EXPECT_EQ(model.Tag(u"TXXX", 2),
              u"Cue In\0"
              u"2000"sv);
    EXPECT_EQ(model.CueIn(), 2000);
}

TEST(RadioFieldsOfATag, ATagWithCustomFramesIsNotStamped) {
    OpenedModel opened(Tag(3).text("TIT2", "A").field("Intro", "5").field("x", "y").padded_to(300) +
                       audio());
    opened.model.AddCustomField(u"Intro", u"6");
    EXPECT_EQ(opened.model.TagsInFrame(u"TXXX"), 2);
    EXPECT_EQ(opened.model.Tag(u"TXXX", 1),
              u"Intro\0"
              u"6"sv);
    EXPECT_EQ(opened.model.Tag(u"TXXX", 2), u"x\0y"sv);
    opened.model.AddCustomField(u"new", u"7");
    EXPECT_EQ(opened.model.TagsInFrame(u"TXXX"), 3);
    EXPECT_EQ(opened.model.Tag(u"TXXX", 3),
              u"new\0"
              u"7"sv);
}

// With these two values alone in the tag, one is left when the first is taken out, so the look for
// others ends at the first number: the frame goes from the list, and comes back counting one.
TEST(RadioFieldsOfATag, ReplacingTheFirstOfTwoLoneFieldsRestartsTheCount) {
    OpenedModel opened(Tag(3).field("Intro", "5").field("x", "y").padded_to(300) + audio());
    opened.model.AddCustomField(u"Intro", u"6");
    EXPECT_EQ(opened.model.TagsInFrame(u"TXXX"), 1);
    EXPECT_EQ(opened.model.Tag(u"TXXX", 1),
              u"Intro\0"
              u"6"sv);
    EXPECT_EQ(opened.model.Tag(u"TXXX", 2), u"x\0y"sv);
    // The next number is taken already.
    opened.model.AddCustomField(u"new", u"7");
    EXPECT_EQ(opened.model.TagsInFrame(u"TXXX"), 2);
    EXPECT_EQ(opened.model.Tag(u"TXXX", 2), u"x\0y"sv);
    EXPECT_EQ(opened.model.Tag(u"TXXX", 3), u"");
    EXPECT_EQ(opened.model.GetCustomField(u"new"), u"7");
}

TEST_F(RadioFields, EachIsKeptUnderItsName) {
    model.Sectonemsend(-1);
    model.Speed(12.5);
    model.Volume(2147483647);
    model.Opener(true);
    model.CueIn(1500);
    model.CategoryLevel(-32768);
    EXPECT_EQ(model.GetCustomField(u"Sec Tone"), u"-1");
    EXPECT_EQ(model.GetCustomField(u"TarnSpeed"), u"12.5");
    EXPECT_EQ(model.GetCustomField(u"Volume"), u"2147483647");
    EXPECT_EQ(model.GetCustomField(u"Opener"), u"-1");
    EXPECT_EQ(model.GetCustomField(u"Cue In"), u"1500");
    EXPECT_EQ(model.GetCustomField(u"CatLevel"), u"-32768");
    EXPECT_EQ(model.Sectonemsend(), -1);
    EXPECT_EQ(model.Speed(), 12.5);
    EXPECT_EQ(model.Volume(), 2147483647);
    EXPECT_TRUE(model.Opener());
    EXPECT_EQ(model.CueIn(), 1500);
    EXPECT_EQ(model.CategoryLevel(), -32768);
    model.Opener(false);
    EXPECT_EQ(model.GetCustomField(u"Opener"), u"0");
    EXPECT_FALSE(model.Opener());
    EXPECT_EQ(model.Tag(u"TXXX", 5),
              u"Opener\0"
              u"0"sv)
        << "each field keeps its place";
}

// A script may hand over the name as a number.
TEST_F(RadioFields, ANameThatIsNoTextIsFoundByItsText) {
    model.AddCustomField(u"7", u"seven");
    EXPECT_EQ(model.GetCustomField(std::int32_t{7}), u"seven");
}

TEST_F(RadioFields, ASpeedIsItsShortestDecimalText) {
    const std::pair<double, const char16_t*> speeds[] = {
        {0.1, u"0.1"},   {1e21, u"1000000000000000000000"}, {-0.25, u"-0.25"}, {1e-7, u"0.0000001"},
        {100.0, u"100"},
    };
    for (const auto& [speed, text] : speeds) {
        model.Speed(speed);
        EXPECT_EQ(model.GetCustomField(u"TarnSpeed"), text);
        EXPECT_EQ(model.Speed(), speed);
    }
}

struct StoredNumber {
    const char16_t* text;
    std::int32_t as_long;
    std::int16_t as_integer;
    double as_double;
};

TEST_F(RadioFields, StoredTextReadsAsANumberOrAsTheDefault) {
    const StoredNumber numbers[] = {
        {u"abc", 0, 0, 0.0},
        {u"", 0, 0, 0.0},
        {u"12.5", 12, 12, 12.5},
        {u"13.5", 14, 14, 13.5},
        {u"-12.5", -12, -12, -12.5},
        {u" 7 ", 7, 7, 7.0},
        {u"1e2", 100, 100, 100.0},
        {u"7x", 0, 0, 0.0},
        {u"1,5", 0, 0, 0.0},
        {u"40000", 40000, 0, 40000.0},
        {u"32767.4", 32767, 32767, 32767.4},
        {u"32767.5", 32768, 0, 32767.5},
        {u"2147483648", 0, 0, 2147483648.0},
        {u"-2147483648", -2147483647 - 1, 0, -2147483648.0},
        {u"1e400", 0, 0, 0.0},
    };
    for (const StoredNumber& number : numbers) {
        for (const char16_t* name :
             {u"Sec Tone", u"TarnSpeed", u"Volume", u"Opener", u"Cue In", u"CatLevel"}) {
            store(name, number.text);
        }
        const std::string shown = to_utf8(number.text);
        EXPECT_EQ(model.Sectonemsend(), number.as_long) << shown;
        EXPECT_EQ(model.Volume(), number.as_long) << shown;
        EXPECT_EQ(model.CueIn(), number.as_long) << shown;
        EXPECT_EQ(model.Opener(), number.as_long != 0) << shown;
        EXPECT_EQ(model.CategoryLevel(), number.as_integer) << shown;
        EXPECT_EQ(model.Speed(), number.as_double) << shown;
    }
}

TEST_F(RadioFields, AStored2IsAnOpener) {
    store(u"Opener", u"2");
    EXPECT_TRUE(model.Opener());
    store(u"Opener", u"0.5");
    EXPECT_FALSE(model.Opener());
}

TEST_F(RadioFields, AFieldReadsWithoutItsNuls) {
    store(u"a", wide(u"x\0y"sv));
    EXPECT_EQ(model.GetCustomField(u"a"), u"xy");
    EXPECT_EQ(model.GetCustomField(u"A"), u"");
    EXPECT_FALSE(model.CustomFieldExists(u"A"));
    EXPECT_TRUE(model.CustomFieldExists(u"a"));
}

TEST_F(RadioFields, AnEmptyFieldExists) {
    store(u"a", u"");
    EXPECT_TRUE(model.CustomFieldExists(u"a"));
    EXPECT_EQ(model.Tag(u"TXXX", 2), u"a\0"sv);
}

TEST_F(RadioFields, RemovingTheFrameLeavesTheField) {
    store(u"a", u"1");
    model.RemoveFrame(u"TXXX", u"a");
    EXPECT_EQ(model.GetCustomField(u"a"), u"1");
    EXPECT_TRUE(model.CustomFieldExists(u"a"));
}

TEST_F(RadioFields, AFieldWithoutANameRemovesTheFramesOfAllOthers) {
    Messages messages;
    model.Owner = &messages;
    store(u"a", u"1");
    store(u"", u"2");
    EXPECT_EQ(messages.shown.size(), 1U);
    EXPECT_EQ(model.TagsInFrame(u"TXXX"), 1);
    EXPECT_EQ(model.Tag(u"TXXX", 1),
              u"\0"
              u"2"sv);
    EXPECT_EQ(model.GetCustomField(u"a"), u"1") << "the fields know no removal";
    EXPECT_EQ(model.GetCustomField(u""), u"2");
}

TEST_F(RadioFields, TheOnlyFieldKeepsItsPlaceToo) {
    model.AddTag(u"TXXX", wide(u"a\0"
                               u"1"sv));
    store(u"a", u"2");
    EXPECT_EQ(model.TagsInFrame(u"TXXX"), 1);
    EXPECT_EQ(model.Tag(u"TXXX", 1),
              u"a\0"
              u"2"sv);
    EXPECT_EQ(model.FrameCount(), 1);
}

}  // namespace
}  // namespace brindle
