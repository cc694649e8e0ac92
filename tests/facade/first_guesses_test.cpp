// What a C++ developer tries first, without having read more than the members' names.
#include <filesystem>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/path.h>
#include <brindle/tag_edit.h>

#include "facade/loaded_header.h"

namespace brindle {
namespace {

using test::audio;
using test::kSong;
using test::LoadedHeader;

class FirstGuesses : public testing::Test {
protected:
    // The file as a new object reads it.
    [[nodiscard]] cMPEGHeader reopened() {
        cMPEGHeader again(loaded.world.environment);
        again.FileName(kSong);
        return again;
    }

    LoadedHeader loaded{audio()};
    cMPEGHeader& header = loaded.header;
};

static_assert(std::is_nothrow_move_constructible_v<cMPEGHeader>);
static_assert(std::is_nothrow_move_assignable_v<cMPEGHeader>);
static_assert(!std::is_copy_constructible_v<cMPEGHeader>);

TEST_F(FirstGuesses, AVectorHoldsThem) {
    std::vector<cMPEGHeader> all;
    for (int number = 0; number < 3; ++number) {
        all.push_back(reopened());
    }
    for (const cMPEGHeader& each : all) {
        EXPECT_EQ(each.FileName(), kSong);
        EXPECT_EQ(each.Frequency(), 44'100);
    }
}

TEST_F(FirstGuesses, AFunctionReturnsOne) {
    EXPECT_EQ(reopened().Duration(), 3'128);
}

TEST_F(FirstGuesses, MovedEditsAreSavedByTheirNewOwner) {
    header.Title("Moved");
    cMPEGHeader owner(std::move(header));
    owner.SaveAllInfo();
    EXPECT_EQ(reopened().Title(), u"Moved");
}

TEST_F(FirstGuesses, EventsMoveAlong) {
    std::vector<String> read;
    header.Reading = [&](const String& name) { read.push_back(name); };
    cMPEGHeader owner(loaded.world.environment);
    owner = std::move(header);
    owner.FileName(kSong);
    EXPECT_EQ(read, std::vector<String>{kSong});
}

// The model speaks to the object that holds it now.
TEST_F(FirstGuesses, AMessageOfAMovedFileComesFromItsNewOwner) {
    cMPEGHeader owner(std::move(header));
    std::vector<String> messages;
    owner.OnMessageBox = [&](const String& text) { messages.push_back(text); };
    owner.CustomFieldAdd("", "no name");
    EXPECT_EQ(messages.size(), 1U);
}

TEST_F(FirstGuesses, AMovedFromObjectIsAsANewOne) {
    cMPEGHeader owner(std::move(header));
    EXPECT_EQ(header.FileName(), u"");  // NOLINT(bugprone-use-after-move): what is tested
    EXPECT_EQ(header.Duration(), 0);
    EXPECT_FALSE(header.g_InUse());
    EXPECT_THROW(header.SaveAllInfo(), Error);
    header.FileName(kSong);
    EXPECT_EQ(header.Duration(), 3'128);
}

TEST_F(FirstGuesses, MovingAnObjectIntoItselfChangesNothing) {
    cMPEGHeader& same = header;
    header = std::move(same);
    EXPECT_EQ(header.FileName(), kSong);
}

TEST_F(FirstGuesses, TextsMayBeUtf8) {
    header.Title("Caf\xC3\xA9");
    EXPECT_EQ(header.Title(), u"Caf\u00E9");
    header.Artist(std::string("Bj\xC3\xB6rk"));
    EXPECT_EQ(header.Artist(), u"Bj\u00F6rk");
}

TEST_F(FirstGuesses, NamesMayBeUtf8) {
    header.FileName("song.mp3");
    EXPECT_EQ(header.FileName(), kSong);
}

TEST_F(FirstGuesses, EveryTextThatCanBeAssignedTakesUtf8) {
    struct Case {
        const char* name;
        void (cMPEGHeader::*set)(std::string_view);
        String (cMPEGHeader::*get)() const;
        const char* text;
    };
    using H = cMPEGHeader;
    for (const Case& c : {
             Case{"Title", &H::Title, &H::Title, "x"},
             Case{"Song", &H::Song, &H::Title, "x"},
             Case{"Artist", &H::Artist, &H::Artist, "x"},
             Case{"Album", &H::Album, &H::Album, "x"},
             Case{"Genre", &H::Genre, &H::Genre, "12"},
             Case{"Comments", &H::Comments, &H::Comments, "x"},
             Case{"Composer", &H::Composer, &H::Composer, "x"},
             Case{"Publisher", &H::Publisher, &H::Publisher, "x"},
             Case{"CopyRight", &H::CopyRight, &H::CopyRight, "x"},
             Case{"URL", &H::URL, &H::URL, "x"},
             Case{"ArtistUrl", &H::ArtistUrl, &H::ArtistUrl, "x"},
             Case{"CategoryLevel", &H::CategoryLevel, &H::CategoryLevel, "3"},
             Case{"Endstyle", &H::Endstyle, &H::Endstyle, "x"},
             Case{"Agency", &H::Agency, &H::Agency, "x"},
             Case{"AccountExec", &H::AccountExec, &H::AccountExec, "x"},
             Case{"Copy", &H::Copy, &H::Copy, "x"},
             Case{"Titlev1Tag", &H::Titlev1Tag, &H::Titlev1Tag, "x"},
             Case{"artistv1Tag", &H::artistv1Tag, &H::artistv1Tag, "x"},
             Case{"Commentv1", &H::Commentv1, &H::Commentv1, "x"},
         }) {
        (header.*c.set)(c.text);
        EXPECT_EQ((header.*c.get)(), from_utf8(c.text)) << c.name;
    }
    header.Category("Jingle");
    EXPECT_EQ(header.Category(), Variant(u"Jingle"));
}

TEST_F(FirstGuesses, ACustomFieldHasANameAndAText) {
    header.CustomFieldAdd("Mood", "calm");
    EXPECT_TRUE(header.CustomFieldExists("Mood"));
    EXPECT_EQ(header.CustomFieldRetrieve("Mood"), Variant(u"calm"));
}

TEST_F(FirstGuesses, OrANumber) {
    header.CustomFieldAdd("Beats", std::int32_t{120});
    EXPECT_EQ(header.CustomFieldRetrieve("Beats"), Variant(u"120"));
}

TEST_F(FirstGuesses, FrameIdsAreIteratedOver) {
    header.Title("T");
    header.Artist("A");
    std::vector<String> ids;
    for (const Variant& id : *header.v2Frames()) {
        ids.push_back(std::get<String>(id));
    }
    EXPECT_EQ(ids, (std::vector<String>{u"TIT2", u"TPE1"}));
    EXPECT_EQ(header.v2Tag("TIT2", 1), u"T");
    EXPECT_EQ(header.TagsInFrame("TIT2"), 1);
}

TEST_F(FirstGuesses, CustomFieldsAreIteratedOver) {
    header.CustomFieldAdd("Mood", "calm");
    header.CustomFieldAdd("Key", "Am");
    header.CustomFieldAdd("Mood", "wild");
    std::vector<CustomField> fields;
    for (const CustomField& field : header.CustomFields()) {
        if (field.name != u"TAGGED BY") {
            fields.push_back(field);
        }
    }
    EXPECT_EQ(fields, (std::vector<CustomField>{{u"Mood", u"wild"}, {u"Key", u"Am"}}));
}

TEST_F(FirstGuesses, ACustomFieldThatWasReadTwiceIsListedOnceAndRemovedWhole) {
    loaded.load(
        test::Tag().field("Mood", "first").field("Key", "Am").field("Mood", "second").bytes() +
        audio());
    EXPECT_EQ(header.CustomFields(),
              (std::vector<CustomField>{{u"Mood", u"first"}, {u"Key", u"Am"}}));
    header.CustomFieldRemove("Mood");
    EXPECT_FALSE(header.CustomFieldExists("Mood"));
    EXPECT_EQ(header.CustomFieldRetrieve("Mood"), Variant(u""));
    EXPECT_EQ(header.CustomFields(), (std::vector<CustomField>{{u"Key", u"Am"}}));
    header.SaveAllInfo();
    const cMPEGHeader again = reopened();
    EXPECT_FALSE(again.CustomFieldExists("Mood"));
    EXPECT_EQ(again.CustomFieldRetrieve("Key"), Variant(u"Am"));
}

TEST_F(FirstGuesses, ARemovedCustomFieldCanBeSetAgain) {
    header.CustomFieldAdd("Mood", "calm");
    header.CustomFieldRemove("Mood");
    header.CustomFieldAdd("Mood", "wild");
    header.SaveAllInfo();
    EXPECT_EQ(reopened().CustomFieldRetrieve("Mood"), Variant(u"wild"));
}

TEST_F(FirstGuesses, AnEditAlsoRemovesARemovedField) {
    loaded.load(test::Tag().field("Mood", "calm").field("Key", "Am").bytes() + audio());
    header.CustomFieldRemove("Mood");
    TagEdit(header).save();
    const cMPEGHeader again = reopened();
    EXPECT_FALSE(again.CustomFieldExists("Mood"));
    EXPECT_EQ(again.CustomFieldRetrieve("Key"), Variant(u"Am"));
}

TEST_F(FirstGuesses, AnEditHasNoFieldThatWasSetAndRemoved) {
    header.CustomFieldAdd("Mood", "calm");
    header.CustomFieldAdd("Key", "Am");
    header.CustomFieldRemove("Mood");
    TagEdit(header).save();
    const cMPEGHeader again = reopened();
    EXPECT_FALSE(again.CustomFieldExists("Mood"));
    EXPECT_EQ(again.CustomFieldRetrieve("Key"), Variant(u"Am"));
}

TEST_F(FirstGuesses, RemovingWhatIsNotThereChangesNothing) {
    header.CustomFieldAdd("Mood", "calm");
    header.CustomFieldRemove("mood");
    header.CustomFieldRemove("");
    EXPECT_TRUE(header.CustomFieldExists("Mood"));
}

TEST_F(FirstGuesses, TheReasonWhyAFileIsNotOpenCanBeRead) {
    EXPECT_FALSE(header.OpeningError());
    header.FileName("missing.mp3");
    ASSERT_TRUE(header.OpeningError());
    EXPECT_EQ(header.OpeningError()->number(), 53);
    header.FileName("song.wav");
    ASSERT_TRUE(header.OpeningError());
    EXPECT_EQ(header.OpeningError()->number(), 5);
    header.FileName(kSong);
    EXPECT_FALSE(header.OpeningError());
    header.FileName("");
    EXPECT_FALSE(header.OpeningError());
}

TEST_F(FirstGuesses, ANewObjectHasNoErrorAndNoFields) {
    const cMPEGHeader fresh(loaded.world.environment);
    EXPECT_FALSE(fresh.OpeningError());
    EXPECT_TRUE(fresh.CustomFields().empty());
}

TEST_F(FirstGuesses, PathsAreNames) {
    open(header, std::filesystem::path("song.mp3"));
    EXPECT_EQ(header.FileName(), kSong);
    EXPECT_EQ(path_of(header), std::filesystem::path("song.mp3"));
}

#ifndef _WIN32
TEST(Paths, EveryByteOfANameSurvives) {
    const std::filesystem::path path = "caf\xE9 \xC3\xA9 \xFF.mp3";
    EXPECT_EQ(file_path(file_name(path)), path);
}
#endif

}  // namespace
}  // namespace brindle
