// What a save would need and lose, case by case. The library reads frames in its own, simple way;
// what other programs see besides is told before it goes.
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/save_plan.h>

#include "facade/loaded_header.h"
#include "support/frames.h"
#include "support/made_content.h"
#include "support/memory_environment.h"
#include "support/tags.h"

namespace brindle::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::string_view_literals;

std::string narrow_text(const String& text) {
    return {text.begin(), text.end()};
}

std::string word(LossReason reason) {
    switch (reason) {
        case LossReason::TooLarge:
            return "too large";
        case LossReason::AfterCorrupt:
            return "after corrupt";
        case LossReason::NotReached:
            return "not reached";
        case LossReason::Misread:
            return "misread";
        case LossReason::Version2:
            return "version 2";
        case LossReason::NotWritten:
            return "not written";
    }
    return "?";
}

std::string place(const TagFrame& frame) {
    return narrow_text(frame.id) + ":" + std::to_string(frame.number) +
           (frame.name.empty() ? "" : " \"" + narrow_text(frame.name) + "\"") + " " +
           std::to_string(frame.size);
}

using Words = std::vector<std::string>;

// "TIT2:1 5001 too large"
Words losses(const SavePlan& plan) {
    Words words;
    for (const LostFrame& frame : plan.losses) {
        words.push_back(place(frame) + " " + word(frame.reason));
    }
    return words;
}

// "COMM:1 7 same text"
Words changes(const SavePlan& plan) {
    Words words;
    for (const ChangedFrame& frame : plan.changes) {
        words.push_back(place(frame) + (frame.same_text ? " same text" : " other content"));
    }
    return words;
}

struct OpenedFile : LoadedHeader {
    explicit OpenedFile(const Bytes& file) : LoadedHeader(file) { world.files.reset_counts(); }

    [[nodiscard]] SavePlan plan() const { return plan_save(header); }
};

// --- Frames of the file and what becomes of them

struct FrameCase {
    const char* name;
    Bytes tag;
    Words losses;
    Words changes;
};

void PrintTo(const FrameCase& frame_case, std::ostream* stream) {
    *stream << frame_case.name;
}

class SavePlanOfFrames : public ::testing::TestWithParam<FrameCase> {};

TEST_P(SavePlanOfFrames, NamesWhatIsLostAndWhatIsChanged) {
    const OpenedFile file(GetParam().tag + audio());
    const SavePlan plan = file.plan();
    EXPECT_EQ(losses(plan), GetParam().losses);
    EXPECT_EQ(changes(plan), GetParam().changes);
}

std::vector<FrameCase> frame_cases() {
    // The longest bodies that are read, and one byte more. The letters after a text that is too
    // long are taken for a header with an impossible size.
    const Bytes longest_text = Bytes{0} + letters(4999);
    const Bytes too_long_text = Bytes{0} + letters(5000);
    const Bytes picture_start = "\0image/png\0\3\0"sv;  // 13 bytes
    const Bytes largest_picture = picture_start + letters(81'920 - 13);
    const Bytes too_large_picture = picture_start + letters(81'921 - 13);
    const Bytes text_of_200 = Bytes{0} + letters(200);
    return {
        // clang-format off
        {"PlainTextIsKept", Tag(3).text("TIT2", "Song").padding(50).bytes(), {}, {}},
        {"UserTextIsKept", Tag(3).field("Cue In", "1500").padding(50).bytes(), {}, {}},
        {"PictureIsKept", Tag(3).picture("image/png", 3, "x", letters(100)).bytes(), {}, {}},
        {"LongestTextIsKept", Tag(3).frame("TIT2", longest_text).bytes(), {}, {}},
        {"LargestPictureIsKept", Tag(3).frame("APIC", largest_picture).bytes(), {}, {}},
        {"EmptyFrameIsNone", Tag(3).frame("TIT2", {}).text("TPE1", "A").bytes(), {}, {}},
        {"StampOfTheLastSaveIsNoLoss", Tag(3).field("TAGGED BY", "somebody").bytes(), {}, {}},

        {"TooLongTextAndTheFramesAfterIt",
         Tag(3).frame("TIT2", too_long_text).text("TPE1", "Ann").bytes(),
         {"TIT2:1 5001 too large", "TPE1:1 4 after corrupt"}, {}},
        {"TooLargePicture", Tag(3).text("TPE1", "Ann").frame("APIC", too_large_picture).bytes(),
         {"APIC:1 81921 too large"}, {}},
        {"ZerosOfATooLongFrameLookLikeTheEnd",
         Tag(3).frame("GEOB", zeros(5001)).text("TPE1", "Ann").bytes(),
         {"GEOB:1 5001 too large", "TPE1:1 4 not reached"}, {}},
        {"SecondOfAnIdHasItsNumber",
         Tag(3).comment("eng", "", "Hi").frame("COMM", too_long_text).bytes(),
         {"COMM:2 5001 too large"}, {"COMM:1 7 same text"}},
        {"TooLongUserTextHasItsName",
         Tag(3).field("Note", letters(5000)).bytes(),
         {"TXXX:1 \"Note\" 5006 too large"}, {}},
        {"UserTextAfterAnEmptyOne",
         Tag(3).field("A", "1").frame("TXXX", zeros(2)).field("B", "2").bytes(),
         {"TXXX:2 2 not written", "TXXX:3 \"B\" 4 not written"}, {}},
        {"SecondTagRightAfterTheFirst",
         Tag(3).text("TPE1", "Ann").padding(10) + Tag(3).frame("TIT2", too_long_text).bytes(),
         {"TIT2:1 5001 too large"}, {}},

        {"Version4SizeTakesTheNextFrameAlong",
         Tag(4).frame("TIT2", text_of_200).text("TPE1", "Ann").padding(500).bytes(),
         {"TIT2:1 201 misread", "TPE1:1 4 not reached"}, {}},
        {"Version4SizeTakesPaddingAlong",
         Tag(4).frame("TIT2", text_of_200).padding(500).bytes(),
         {}, {}},
        {"Version4WithPlainSizes",
         Tag(4).frame_claiming("TIT2", 201, text_of_200).text("TPE1", "Ann").padding(9).bytes(),
         {}, {}},

        {"UnsynchronisedTagWithNothingToUndo",
         Tag(3).flags(0x80).text("TIT2", "Song").bytes(), {}, {}},
        // Four bytes without the zero after FF, five with it; the fifth is taken for an id.
        {"UnsynchronisedText",
         Tag(3).flags(0x80).frame_claiming("TIT2", 4, Bytes{0, 'A', 0xFF, 0, 0xE0})
               .text("TPE1", "Ann").bytes(),
         {"TIT2:1 4 misread", "TPE1:1 4 after corrupt"}, {}},
        {"UnsynchronisedPictureOfVersion4",
         Tag(4).raw(flagged("APIC", 0x02, "\0image/png\0\3\0\xFF\0\xE0"sv)).bytes(),
         {"APIC:1 16 misread"}, {}},

        {"ExtendedHeaderOfVersion3IsSteppedOverByLuck",
         Tag(3).flags(0x40).raw(big_endian(6, 4) + zeros(6)).text("TIT2", "Song").bytes(), {}, {}},
        {"ExtendedHeaderWithChecksum",
         Tag(3).flags(0x40).raw(big_endian(10, 4) + Bytes{0x80, 0} + zeros(4) + letters(4))
               .text("TIT2", "Song").bytes(),
         {"TIT2:1 5 after corrupt"}, {}},
        {"ExtendedHeaderOfVersion4",
         Tag(4).flags(0x40).raw(syncsafe(6) + Bytes{1, 0}).text("TIT2", "Song").bytes(),
         {"TIT2:1 5 after corrupt"}, {}},

        {"CompressedFrame",
         Tag(3).raw(flagged("TIT2", 0x80, big_endian(5, 4) + letters(9))).bytes(),
         {"TIT2:1 13 misread"}, {}},
        {"EncryptedFrame", Tag(4).raw(flagged("TIT2", 0x04, letters(9))).bytes(),
         {"TIT2:1 9 misread"}, {}},
        {"GroupedText", Tag(3).raw(flagged("TIT2", 0x20, "\7\0Song"sv)).bytes(),
         {}, {}},
        {"LengthInFrontOfAText",
         Tag(4).raw(flagged("TIT2", 0x01, big_endian(5, 4) + Bytes("\0Song"sv))).bytes(),
         {"TIT2:1 9 misread"}, {}},

        {"WideTextBecomes8Bit", Tag(3).utf16_text("TIT2", u"Song \u00C4").bytes(),
         {}, {"TIT2:1 15 same text"}},
        {"WideTextOutsideTheCodePage", Tag(3).utf16_text("TIT2", u"\u03A9").bytes(),
         {}, {"TIT2:1 5 other content"}},
        {"Utf8TextKeepsItsEncodingByteAsACharacter", Tag(4).utf8_text("TIT2", "Song").bytes(),
         {}, {"TIT2:1 5 other content"}},
        {"SeparatorsOfACommentGo", Tag(3).comment("eng", "d", "Hi").bytes(),
         {}, {"COMM:1 8 same text"}},
        {"LinkGetsAnEncodingByte", Tag(3).frame("WOAR", "http://a").bytes(),
         {}, {"WOAR:1 8 same text"}},
        {"UserLinkLosesItsSeparator", Tag(3).frame("WXXX", "\0d\0http://a"sv).bytes(),
         {}, {"WXXX:1 11 same text"}},
        {"FirstFieldOfABinaryFrameGoes", Tag(3).frame("PRIV", "me\0\1\2"sv).bytes(),
         {}, {"PRIV:1 5 other content"}},

        {"Version2KeepsTitleArtistAndYear",
         Tag(2).text("TT2", "Song").text("TP1", "Ann").text("TYE", "1999").padding(50).bytes(),
         {}, {}},
        {"Version2LosesTheRest",
         Tag(2).text("TT2", "Song").text("TAL", "Album").comment("eng", "", "Hi")
               .field("Cue In", "1500").padding(50).bytes(),
         {"TAL:1 6 version 2", "COM:1 7 version 2", "TXX:1 \"Cue In\" 12 version 2"}, {}},
        {"Version2KeepsTheLastOfTwoTitles",
         Tag(2).text("TT2", "One").text("TT2", "Two").padding(50).bytes(),
         {"TT2:1 4 version 2"}, {}},
        // The NULs go with the encoding, so that the mark is in the title as characters.
        {"Version2WideTitleKeepsItsMark",
         Tag(2).frame("TT2", "\1\xFF\xFES\0o\0n\0g\0"sv).padding(50).bytes(),
         {}, {"TT2:1 11 other content"}},
        {"TagAfterOtherBytes",
         zeros(100) + Tag(3).utf16_text("TIT2", u"Song \u00C4").bytes(),
         {}, {"TIT2:1 15 same text"}},
        {"Version2CompressedAsAWholeIsNoTag",
         Tag(2).flags(0x40).text("TAL", "Album").padding(50).bytes(), {}, {}},
        // clang-format on
    };
}

INSTANTIATE_TEST_SUITE_P(SavePlan, SavePlanOfFrames, ::testing::ValuesIn(frame_cases()),
                         [](const auto& test) { return std::string(test.param.name); });

// --- A value that the host has set or removed is not a loss

struct EditCase {
    const char* name;
    Bytes tag;
    std::function<void(cMPEGHeader&)> edit;
    Words losses;
};

void PrintTo(const EditCase& edit_case, std::ostream* stream) {
    *stream << edit_case.name;
}

class SavePlanAfterEdits : public ::testing::TestWithParam<EditCase> {};

TEST_P(SavePlanAfterEdits, NamesFramesThatWereNotReplaced) {
    OpenedFile file(GetParam().tag + audio());
    GetParam().edit(file.header);
    const SavePlan plan = file.plan();
    EXPECT_EQ(losses(plan), GetParam().losses);
    EXPECT_THAT(plan.changes, IsEmpty());
}

std::vector<EditCase> edit_cases() {
    const Bytes too_long = Bytes{0} + letters(5000);
    const Bytes note = Bytes("\0Note\0"sv) + letters(5000);
    return {
        // clang-format off
        {"TitleTakesThePlaceOfATooLongOne", Tag(3).frame("TIT2", too_long).bytes(),
         [](cMPEGHeader& h) { h.Title(u"Short"); }, {}},
        {"ArtistDoesNot", Tag(3).frame("TIT2", too_long).bytes(),
         [](cMPEGHeader& h) { h.Artist(u"Short"); }, {"TIT2:1 5001 too large"}},
        {"CommentTakesThePlaceOfAllComments",
         Tag(3).comment("eng", "", "One").frame("COMM", too_long).bytes(),
         [](cMPEGHeader& h) { h.Comments(u"Two"); }, {}},
        {"FieldTakesThePlaceOfItsNamesake", Tag(3).frame("TXXX", note).bytes(),
         [](cMPEGHeader& h) { h.CustomFieldAdd(u"Note", String(u"x")); }, {}},
        {"FieldOfAnotherNameDoesNot", Tag(3).frame("TXXX", note).bytes(),
         [](cMPEGHeader& h) { h.CustomFieldAdd(u"note", String(u"x")); },
         {"TXXX:1 \"Note\" 5006 too large"}},
        {"TextThatWasReplacedIsNotChanged", Tag(3).utf16_text("TIT2", u"\u03A9").bytes(),
         [](cMPEGHeader& h) { h.Title(u"Omega"); }, {}},
        {"FrameThatTheHostTookOutOfTheList", Tag(3).comment("eng", "", "One").bytes(),
         [](cMPEGHeader& h) { h.v2Frames()->Remove(u"COMM"); }, {}},
        {"Version2DropsAnAlbumThatWasSetToo", Tag(2).text("TAL", "Old").padding(9).bytes(),
         [](cMPEGHeader& h) { h.Album(u"New"); }, {"TAL:1 4 version 2"}},
        {"Version2KeepsATitleThatWasSet", Tag(2).text("TT2", "Old").padding(9).bytes(),
         [](cMPEGHeader& h) { h.Title(u"New"); }, {}},
        // clang-format on
    };
}

INSTANTIATE_TEST_SUITE_P(SavePlan, SavePlanAfterEdits, ::testing::ValuesIn(edit_cases()),
                         [](const auto& test) { return std::string(test.param.name); });

// --- Lengths. A tag that holds nothing but the stamp of a save:
// --- header 10, frame header 10, body 1 + 9 ("TAGGED BY") + 1 + 31, end mark 4.

constexpr std::int64_t kStampedLength = 66;
constexpr std::int64_t kTitleFrame = 15;  // header 10, body 1 + 4 ("Song")

TEST(SavePlan, FileWithoutATagIsRebuilt) {
    const OpenedFile file(audio());
    const SavePlan plan = file.plan();
    EXPECT_EQ(plan.tag_version, 0);
    EXPECT_EQ(plan.needed_length, kStampedLength);
    EXPECT_EQ(plan.tag_area, 0);
    EXPECT_FALSE(plan.fits);
}

TEST(SavePlan, TagFitsWhenAByteOfItsAreaIsLeft) {
    struct Case {
        std::size_t area;
        bool fits;
    };
    for (const Case& c : {Case{kStampedLength + kTitleFrame, false},
                          Case{kStampedLength + kTitleFrame + 1, true}, Case{4096, true}}) {
        OpenedFile file(Tag(3).text("TIT2", "Song").padded_to(c.area) + audio());
        const std::size_t length = file.content().size();
        const SavePlan plan = file.plan();
        EXPECT_EQ(plan.tag_version, 3);
        EXPECT_EQ(plan.needed_length, kStampedLength + kTitleFrame);
        EXPECT_EQ(plan.tag_area, c.area);
        EXPECT_EQ(plan.fits, c.fits) << c.area;
        file.header.SaveAllInfo();
        // The record's 128 bytes come in any case, a larger area only when it does not fit.
        EXPECT_EQ(file.content().size() == length + 128, c.fits) << c.area;
    }
}

TEST(SavePlan, TagOfVersion2IsAlwaysRebuilt) {
    const OpenedFile file(Tag(2).text("TT2", "Song").padded_to(4096) + audio());
    const SavePlan plan = file.plan();
    EXPECT_EQ(plan.tag_version, 2);
    EXPECT_EQ(plan.tag_area, 4096);
    EXPECT_FALSE(plan.fits);
    // Artist and year are written empty: a header and an encoding byte each.
    EXPECT_EQ(plan.needed_length, kStampedLength + kTitleFrame + 11 + 11);
}

TEST(SavePlan, AfterASaveNothingIsLostAndTheNextOneFits) {
    OpenedFile file(audio());
    file.header.Title(u"Song");
    file.header.Comments(u"Hello");
    file.header.SaveAllInfo();
    const SavePlan plan = file.plan();
    EXPECT_THAT(plan.losses, IsEmpty());
    EXPECT_EQ(plan.tag_area, 2048);
    EXPECT_TRUE(plan.fits);
}

// Too short to be searched for a tag: other programs see the tag, and a save puts another one
// there.
TEST(SavePlan, TagOfAVeryShortFileIsLost) {
    const OpenedFile file(Tag(3).text("TIT2", "Song").padding(20) + stream(Frame{}, 5));
    EXPECT_THAT(losses(file.plan()), ElementsAre("TIT2:1 5 not reached"));
}

TEST(SavePlan, TouchesNothing) {
    OpenedFile file(Tag(3).text("TIT2", "Song").padding(20) + audio());
    const Bytes before = file.content();
    static_cast<void>(file.plan());
    EXPECT_EQ(file.content(), before);
    EXPECT_EQ(file.files().calls(FileCall::Write), 0U);
    EXPECT_EQ(file.header.TagsInFrame(u"TXXX"), 0);
    EXPECT_EQ(file.files().open_files(), 0U);
}

TEST(SavePlan, BodiesAreSteppedOver) {
    // Longer than the tag, or the audio would not be found after it.
    OpenedFile file(Tag(3).frame("GEOB", letters(400'000)) + stream(Frame{}, 1200));
    EXPECT_THAT(losses(file.plan()), ElementsAre("GEOB:1 400000 too large"));
    EXPECT_LT(file.files().bytes_read(), 200'000U);
}

// --- What hosts would find afterwards

// A tag that the analyser overlooks, as it is more than half of the file.
TEST(SavePlan, StreamAfterATagOfMoreThanHalfOfTheFileIsLost) {
    OpenedFile file(Tag(3).padding(500) + stream(Frame{}, 60));
    file.header.CustomFieldAdd(u"Note", Variant(String(4900, u'n')));
    EXPECT_FALSE(file.plan().loses_stream);
    for (const char16_t* name : {u"Note 2", u"Note 3", u"Note 4", u"Note 5", u"Note 6"}) {
        file.header.CustomFieldAdd(name, Variant(String(4900, u'n')));
    }
    EXPECT_TRUE(file.plan().loses_stream);
    file.header.SaveAllInfo();
    file.header.FileName(kSong);
    EXPECT_EQ(file.header.Frequency(), 0);
}

// A false header in a picture after which the end of the tag is unknown: from there on all is
// kept, and more than 16,384 positions of it precede the audio.
TEST(SavePlan, StreamAfterWhatIsKeptOfADoubtfulTagIsLost) {
    const Bytes picture = Bytes{0xFF, 0xFB, 0x90, 0x64} + repeated(30'000, 0x11);
    Tag tag(3);
    tag.picture("image/png", 3, "", picture);
    OpenedFile file(tag.size(static_cast<std::uint32_t>(tag.length() - 10 - 1)) + audio());
    ASSERT_EQ(file.header.Frequency(), 44100);
    EXPECT_TRUE(plan_strip(file.header, v2TagOnly).loses_stream);
    EXPECT_TRUE(file.header.StripTags(v2TagOnly));
    EXPECT_EQ(file.header.Frequency(), 0);
    EXPECT_EQ(file.content().last(audio().size()), audio());
}

// Junk before the tag goes, and then the Xing header counts more bytes than the file has.
TEST(SavePlan, StreamThatNeedsTheLengthOfTheFileIsLost) {
    // 8,192 bytes afterwards, which is a short file, and one more.
    for (const std::size_t rest : {178U, 179U}) {
        OpenedFile file(repeated(4000, 'j') + Tag(3).padded_to(60).bytes() +
                        xing_frame(Frame{}, {.frames = 13, .bytes = 9000}) + stream(Frame{}, 13) +
                        zeros(rest));
        ASSERT_EQ(file.header.Frequency(), 44100) << rest;
        EXPECT_TRUE(file.plan().loses_stream) << rest;
        file.header.SaveAllInfo();
        file.header.FileName(kSong);
        EXPECT_EQ(file.header.Frequency(), 0) << rest;
    }
}

TEST(SavePlan, FileWithoutAStreamLosesNone) {
    OpenedFile file(Tag(3).padding(500) + repeated(9000, 0x55));
    EXPECT_FALSE(file.plan().loses_stream);
    EXPECT_FALSE(plan_strip(file.header, v2TagOnly).loses_stream);
}

// --- What rules a save out

TEST(SavePlan, EmptyFileIsRefused) {
    const OpenedFile file(Bytes{});
    ASSERT_TRUE(file.plan().refusal);
    EXPECT_EQ(file.plan().refusal->number(), -2147217407);
}

TEST(SavePlan, Version2TagWithoutAnEndIsRefused) {
    const OpenedFile file(Tag(2).padding(90).size(90'000) + repeated(6000, 0x55));
    ASSERT_TRUE(file.plan().refusal);
    EXPECT_EQ(file.plan().refusal->number(), 5);
}

TEST(SavePlan, OrdinaryFileIsNotRefused) {
    const OpenedFile file(Tag(3).text("TIT2", "Song") + audio());
    EXPECT_FALSE(file.plan().refusal);
}

// With the record that the save appends, the tag of a file of 4,097 bytes or less is found.
TEST(SavePlan, RecordToComeCounts) {
    const Bytes audio = stream(Frame{}, 8);
    for (const bool has_record : {false, true}) {
        const Bytes content = Tag(3).text("TIT2", "Song").padded_to(4050 - audio.size()) + audio +
                              (has_record ? Bytes("TAG") + zeros(125) : Bytes());
        OpenedFile file(content);
        const SavePlan plan = file.plan();
        EXPECT_TRUE(plan.fits);
        EXPECT_EQ(plan.tag_area, static_cast<std::int64_t>(4050 - audio.size()));
        file.header.SaveAllInfo();
        EXPECT_EQ(file.files().calls(FileCall::Replace), 0U);
    }
}

// --- What a strip would take off

TEST(StripPlan, ReportsTheBytesToRemove) {
    const Bytes tag = Tag(3).padded_to(500).bytes();
    const Bytes upper = Bytes("TAG") + zeros(125);
    const Bytes lower = Bytes("tag") + zeros(125);
    struct Row {
        const char* name;
        Bytes content;
        eTagType tags;
        std::int64_t tag_bytes;
        std::int64_t record_bytes;
    };
    const Row rows[] = {
        {"both", tag + audio() + upper, v1andv2TagsBothPresent, 500, 128},
        {"the record alone", tag + audio() + upper, v1TagOnly, 0, 128},
        {"the tag alone", tag + audio() + upper, v2TagOnly, 500, 0},
        {"a record in lower case", audio() + lower, v1TagOnly, 0, 128},
        {"no record", tag + audio(), v1TagOnly, 0, 0},
        {"no tag", audio() + upper, v2TagOnly, 0, 0},
        {"junk with the tag", tag + letters(70) + audio(), v2TagOnly, 570, 0},
        {"nothing", tag + audio() + upper, NoTags, 0, 0},
    };
    for (const Row& row : rows) {
        OpenedFile file(row.content);
        const StripPlan plan = plan_strip(file.header, row.tags);
        EXPECT_EQ(plan.tag_bytes, row.tag_bytes) << row.name;
        EXPECT_EQ(plan.record_bytes, row.record_bytes) << row.name;
        EXPECT_FALSE(plan.refusal) << row.name;
        EXPECT_EQ(file.content(), row.content) << row.name;
        const auto size = static_cast<std::int64_t>(row.content.size());
        EXPECT_TRUE(file.header.StripTags(row.tags)) << row.name;
        EXPECT_EQ(file.content(), made_of(row.content, plan.content)) << row.name;
        EXPECT_EQ(size - static_cast<std::int64_t>(file.content().size()),
                  row.tag_bytes + row.record_bytes)
            << row.name;
    }
}

TEST(StripPlan, ReportsWhyNothingIsRemoved) {
    const OpenedFile endless(Tag(3).padding(90).size(90'000) + repeated(6000, 0x55));
    ASSERT_TRUE(plan_strip(endless.header, v2TagOnly).refusal);
    EXPECT_EQ(plan_strip(endless.header, v2TagOnly).refusal->number(), 5);
    const OpenedFile tiny(letters(127));
    ASSERT_TRUE(plan_strip(tiny.header, v1TagOnly).refusal);
    EXPECT_EQ(plan_strip(tiny.header, v1TagOnly).refusal->number(), 62);
    MemoryEnvironment world;
    const cMPEGHeader fresh(world.environment);
    EXPECT_EQ(plan_strip(fresh, v2TagOnly).tag_bytes, 0);
}

TEST(SavePlan, WithoutAFileThereIsNothingToPlan) {
    MemoryEnvironment world;
    cMPEGHeader header(world.environment);
    EXPECT_EQ(plan_save(header).needed_length, 0);
    header.FileName(u"song.wav");
    EXPECT_EQ(plan_save(header).needed_length, 0);
}

TEST(SavePlan, MissingFileHasNone) {
    OpenedFile file(audio());
    file.files().remove(kSong);
    EXPECT_EQ(file.plan().needed_length, 0);
}

TEST(SavePlan, EachCallThatFailsRaises) {
    const Bytes song = Tag(3)
                           .text("TIT2", "Song")
                           .picture("image/png", 3, "", letters(60'000))
                           .text("TPE1", "Ann")
                           .padded_to(70'000) +
                       audio();
    OpenedFile healthy(song);
    static_cast<void>(healthy.plan());
    const std::uint64_t calls = healthy.files().calls();
    ASSERT_GE(calls, 4U);
    for (std::uint64_t nth = 1; nth <= calls; ++nth) {
        OpenedFile file(song);
        file.files().fail({.nth = nth});
        try {
            static_cast<void>(file.plan());
            ADD_FAILURE() << nth << ": nothing was raised";
        } catch (const Error& error) {
            EXPECT_EQ(error.number(), 57) << nth;
        }
        EXPECT_EQ(file.files().open_files(), 0U) << nth;
        EXPECT_EQ(file.content(), song) << nth;
    }
}

TEST(SavePlan, FileThatWasNotReadWholeHasNone) {
    OpenedFile file(Tag(3).text("TIT2", "Song").padded_to(20'000) + audio());
    file.files().fail({.nth = 2, .call = FileCall::Read, .from_then_on = true});
    file.header.FileName(kSong);
    ASSERT_TRUE(file.files().has_failed());
    file.files().fail_nothing();
    EXPECT_THROW(static_cast<void>(file.plan()), Error);
}

TEST(SavePlan, FileThatCannotBeReadRaises) {
    OpenedFile file(audio());
    file.files().fail({.nth = 1, .call = FileCall::Read});
    EXPECT_THROW(static_cast<void>(file.plan()), Error);
}

}  // namespace
}  // namespace brindle::test
