// The editor, case by case: what it was told to set changes, and every other frame stays.
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_edit.h>

#include "facade/loaded_header.h"
#include "support/frames.h"
#include "support/made_content.h"
#include "support/memory_environment.h"
#include "support/tags.h"

namespace brindle::test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::string_view_literals;

constexpr std::string_view kStamp = "TXXX=\0TAGGED BY\0CorvaneTagger- Revised Feb 2011"sv;

using Words = std::vector<std::string>;

// Longer than the tags.
Bytes long_audio() {
    return stream(Frame{}, 600);
}

// The frames of the version 3 tag at the start of a file, as "TIT2=body", and "TIT2+flags=body".
Words frames_of(const Bytes& file) {
    Words frames;
    EXPECT_EQ(file.part(0, 6), Bytes("ID3\3\0\0"sv));
    std::size_t size = 0;
    for (std::size_t i = 6; i < 10; ++i) {
        size = size * 128 + file[i];
    }
    std::size_t position = 10;
    while (position + 10 <= size + 10 && file[position] != 0) {
        std::size_t body = 0;
        for (std::size_t i = 4; i < 8; ++i) {
            body = body * 256 + file[position + i];
        }
        const Bytes flags = file.part(position + 8, 2);
        const std::string mark = flags == zeros(2) ? "" : "+" + flags.text();
        frames.push_back(file.part(position, 4).text() + mark + "=" +
                         file.part(position + 10, body).text());
        position += 10 + body;
    }
    EXPECT_EQ(file.part(position, size + 10 - position), zeros(size + 10 - position));
    return frames;
}

std::string narrow_text(const String& text) {
    return {text.begin(), text.end()};
}

std::string label(const TagFrame& frame) {
    return narrow_text(frame.id) + ":" + std::to_string(frame.number);
}

Words labels(const std::vector<TagFrame>& frames) {
    Words words;
    for (const TagFrame& frame : frames) {
        words.push_back(label(frame));
    }
    return words;
}

// "TIT2:1 kept"
Words fates(const EditPlan& plan) {
    Words words;
    for (const EditedFrame& frame : plan.frames) {
        constexpr std::string_view kFates[] = {"kept",    "moved", "converted",
                                               "changed", "lost",  "removed"};
        words.push_back(label(frame) + " " +
                        std::string(kFates[static_cast<std::size_t>(frame.fate)]));
    }
    return words;
}

struct OpenedFile : LoadedHeader {
    using LoadedHeader::LoadedHeader;

    // Edits with the values that are set, and opens the file again.
    EditPlan edit(const EditOptions& options = {}) {
        TagEdit edit(header, options);
        EditPlan plan = edit.plan();
        const Bytes promised = made_of(content(), edit.content());
        edit.save();
        EXPECT_EQ(content(), promised);
        header.FileName(kSong);
        return plan;
    }
};

using Set = std::function<void(cMPEGHeader&)>;

struct EditCase {
    const char* name;
    Bytes tag;
    Set set;
    Words frames;  // afterwards
};

void PrintTo(const EditCase& edit_case, std::ostream* out) {
    *out << edit_case.name;
}

const Set kNewTitle = [](cMPEGHeader& header) { header.Song(u"New"); };
const Set kNewCueIn = [](cMPEGHeader& header) { header.CueInmSStart(200); };
const Set kNewComment = [](cMPEGHeader& header) { header.Comments(u"New"); };
const Set kNewYear = [](cMPEGHeader& header) {
    header.Writev1v2Separate(true);
    header.Year(2026);
};

std::string title(std::string_view text = "New") {
    return "TIT2=" + std::string(1, '\0') + std::string(text);
}
std::string cue_in(std::string_view value = "200") {
    return std::string("TXXX=\0Cue In\0"sv) + std::string(value);
}

std::vector<EditCase> edit_cases() {
    const Bytes big = Bytes{0} + letters(5000);
    const std::string big_text = "TIT3=" + big.text();
    const Bytes picture = Bytes("\0image/png\0\3\0"sv) + letters(81'920);
    const std::string picture_text = "APIC=" + picture.text();
    const std::string stamp(kStamp);
    return {
        // clang-format off
        {"NewFrameFollowsTheOthers", Tag(3).text("TALB", "A").padding(300).bytes(), kNewTitle, {std::string("TALB=\0A"sv), title(), stamp}},
        {"FieldStaysInItsPlace", Tag(3).text("TIT2", "Old").text("TALB", "A").padding(300).bytes(), kNewTitle, {title(), std::string("TALB=\0A"sv), stamp}},
        {"EveryFrameOfTheIdGoes", Tag(3).text("TIT2", "1").text("TALB", "A").text("TIT2", "2").bytes(), kNewTitle, {title(), std::string("TALB=\0A"sv), stamp}},
        {"FieldInUtf16IsReplaced", Tag(3).frame("TXXX", "\1\xFF\xFE\x43\0u\0e\0 \0I\0n\0\0\0\xFF\xFE\x37\0"sv).bytes(), kNewCueIn, {cue_in(), stamp}},
        {"FieldInUtf8IsReplaced", Tag(4).frame("TXXX", "\3Cue In\0007"sv).bytes(), kNewCueIn, {cue_in(), stamp}},
        {"FieldOfAnotherCaseStays", Tag(3).field("CUE IN", "7").bytes(), kNewCueIn, {std::string("TXXX=\0CUE IN\0007"sv), cue_in(), stamp}},
        {"OtherFieldsStay", Tag(3).field("Intro", "7").field("Cue In", "1").field("Outro", "8").bytes(), kNewCueIn, {std::string("TXXX=\0Intro\0007"sv), cue_in(), std::string("TXXX=\0Outro\0008"sv), stamp}},
        {"CommentWithoutDescriptionGoes", Tag(3).comment("eng", "x", "1").comment("deu", "", "2").lyrics("eng", "", "3").bytes(), kNewComment, {std::string("COMM=\0engx\0001"sv), std::string("COMM=\0\0nt\0New"sv), std::string("USLT=\0eng\0003"sv), stamp}},
        {"CommentOfTheComponentGoes", Tag(3).frame("COMM", "\0\0nt\0Old"sv).frame("COMM", "\0engOld"sv).bytes(), kNewComment, {std::string("COMM=\0\0nt\0New"sv), stamp}},
        {"CommentInUtf16WithoutDescriptionGoes", Tag(3).frame("COMM", "\1eng\xFF\xFE\0\0\xFF\xFEo\0"sv).bytes(), kNewComment, {std::string("COMM=\0\0nt\0New"sv), stamp}},
        {"YearReplacesTheRecordingTime", Tag(4).utf8_text("TDRC", "2003-05-06").bytes(), kNewYear, {std::string("TYER=\0" "2026"sv), stamp}},
        {"RecordingTimeIsSplit", Tag(4).utf8_text("TDRC", "2003-05-06T10:20:30").bytes(), kNewTitle, {std::string("TDRC=\1\xFF\xFE\x32\0\x30\0\x30\0\x33\0-\0\x30\0\x35\0-\0\x30\0\x36\0T\0\x31\0\x30\0:\0\x32\0\x30\0:\0\x33\0\x30\0"sv), title(), stamp, std::string("TYER=\0" "2003"sv), std::string("TDAT=\0" "0605"sv), std::string("TIME=\0" "1020"sv)}},
        {"RecordingYearAlone", Tag(4).text("TDRC", "1999").bytes(), kNewTitle, {std::string("TDRC=\0" "1999"sv), title(), stamp, std::string("TYER=\0" "1999"sv)}},
        {"RecordingTimeBesideAYear", Tag(4).text("TDRC", "1999").text("TYER", "1998").bytes(), kNewTitle, {std::string("TDRC=\0" "1999"sv), std::string("TYER=\0" "1998"sv), title(), stamp}},
        {"LargeTextGoesLast", Tag(3).frame("TIT3", big).text("TALB", "A").bytes(), kNewTitle, {std::string("TALB=\0A"sv), title(), stamp, big_text}},
        {"LargePictureGoesLast", Tag(3).frame("APIC", picture).text("TALB", "A").bytes(), kNewTitle, {std::string("TALB=\0A"sv), title(), stamp, picture_text}},
        {"FlagsOfTheTagGo", Tag(3).flags(0xE0).raw(Bytes("\0\0\0\6\0\0\0\0\0\0"sv)).text("TALB", "A").bytes(), kNewTitle, {std::string("TALB=\0A"sv), title(), stamp}},
        {"UnsynchronisationIsUndone", Tag(3).flags(0x80).frame_claiming("PRIV", 3, "A\xFF\0\xE0"sv).bytes(), kNewTitle, {"PRIV=A\xFF\xE0", title(), stamp}},
        {"SecondTagJoins", Tag(3).text("TALB", "A").padding(20).bytes() + Tag(3).text("TIT2", "Old").text("TCOM", "C").bytes(), kNewTitle, {std::string("TALB=\0A"sv), title(), std::string("TCOM=\0C"sv), stamp}},
        {"EmptyFrameStays", Tag(3).frame("TALB", {}).text("TCOM", "C").bytes(), kNewTitle, {"TALB=", std::string("TCOM=\0C"sv), title(), stamp}},
        {"FrameFlagsStay", Tag(3).raw(Bytes("PRIV\0\0\0\2\xE0\x20Gx"sv)).bytes(), kNewTitle, {std::string("PRIV+\xE0\x20=Gx"sv), title(), stamp}},
        {"EncryptedFrameStays", Tag(3).raw(Bytes("TALB\0\0\0\2\0\x40Mx"sv)).bytes(), kNewTitle, {std::string("TALB+\0\x40=Mx"sv), title(), stamp}},
        {"Version2IsConverted", Tag(2).text("TT2", "Old").text("TAL", "A").picture("image/png", 3, "", "x").bytes(), kNewTitle, {title(), std::string("TALB=\0A"sv), std::string("APIC=\0image/png\0\3\0x"sv), stamp}},
        {"ExactlyTwoUserTexts", Tag(3).field("A", "1").field("B", "2").bytes(), kNewCueIn, {std::string("TXXX=\0A\0001"sv), std::string("TXXX=\0B\0002"sv), cue_in(), stamp}},
        {"EmptyUserTextEndsNothing", Tag(3).field("A", "1").frame("TXXX", zeros(2)).field("B", "2").bytes(), kNewCueIn, {std::string("TXXX=\0A\0001"sv), std::string("TXXX=\0\0"sv), std::string("TXXX=\0B\0002"sv), cue_in(), stamp}},
        {"GenreIsItsNumber", Tag(3).text("TCON", "(4)Disco").bytes(), [](cMPEGHeader& header) { header.Genre(u"17"); }, {std::string("TCON=\0(17)"sv), stamp}},
        {"LinkOutsideTheCodePageIsInIt", Tag(3).text("TALB", "A").bytes(), [](cMPEGHeader& header) { header.URL(u"http://\u0141"); }, {std::string("TALB=\0A"sv), "WOAR=http://?", stamp}},
        {"LinkHasNoEncoding", {}, [](cMPEGHeader& header) { header.URL(u"http://a"); }, {"WOAR=http://a", stamp}},
        // clang-format on
    };
}

class TagEdits : public ::testing::TestWithParam<EditCase> {};

TEST_P(TagEdits, ChangeWhatWasSetAndNothingElse) {
    OpenedFile file(GetParam().tag + long_audio());
    GetParam().set(file.header);
    const EditPlan plan = file.edit();
    EXPECT_THAT(plan.losses(), IsEmpty());
    EXPECT_EQ(frames_of(file.content()), GetParam().frames);
    EXPECT_EQ(file.content().last(long_audio().size()), long_audio());
}

TEST_P(TagEdits, ASecondTimeChangeNoByte) {
    OpenedFile file(GetParam().tag + long_audio());
    GetParam().set(file.header);
    file.edit();
    const Bytes once = file.content();
    GetParam().set(file.header);
    EXPECT_TRUE(file.edit().changes_nothing);
    EXPECT_EQ(file.content(), once);
}

TEST_P(TagEdits, ShowBeforeWhatHostsWillRead) {
    OpenedFile file(GetParam().tag + long_audio());
    GetParam().set(file.header);
    MemoryEnvironment elsewhere;
    cMPEGHeader preview(elsewhere.environment);
    TagEdit edit(file.header);
    edit.preview(preview);
    const TagFacts facts = edit.facts();
    edit.save();
    file.header.FileName(kSong);
    EXPECT_EQ(preview.Album(), file.header.Album());
    EXPECT_EQ(preview.CueInmSStart(), file.header.CueInmSStart());
    EXPECT_EQ(preview.Duration(), file.header.Duration());
    EXPECT_EQ(facts.text(u"TIT2"), read_tag_facts(file.header).text(u"TIT2"));
}

INSTANTIATE_TEST_SUITE_P(, TagEdits, ::testing::ValuesIn(edit_cases()),
                         [](const auto& instance) { return instance.param.name; });

// --- What is removed

struct RemovalCase {
    const char* name;
    Bytes tag;
    FieldName removed;
    Words frames;  // afterwards
};

void PrintTo(const RemovalCase& removal_case, std::ostream* out) {
    *out << removal_case.name;
}

std::vector<RemovalCase> removal_cases() {
    const std::string stamp(kStamp);
    const std::string album("TALB=\0A"sv);
    return {
        // clang-format off
        {"EveryFrameOfTheId", Tag(3).text("TIT2", "1").text("TALB", "A").text("TIT2", "2").bytes(), {u"TIT2"}, {album, stamp}},
        {"TheOnlyFrame", Tag(3).text("TIT2", "1").padding(99).bytes(), {u"TIT2"}, {stamp}},
        {"UserTextOfTheName", Tag(3).field("Show", "1").field("Other", "2").field("Show", "3").bytes(), {u"TXXX", u"Show"}, {std::string("TXXX=\0Other\0002"sv), stamp}},
        {"UserTextInUtf16", Tag(3).frame("TXXX", "\1\xFF\xFE\x41\0\0\0\xFF\xFE\x37\0"sv).text("TALB", "A").bytes(), {u"TXXX", u"A"}, {album, stamp}},
        {"UserTextOfAnotherCaseStays", Tag(3).field("SHOW", "1").field("Show", "2").bytes(), {u"TXXX", u"Show"}, {std::string("TXXX=\0SHOW\0001"sv), stamp}},
        {"CommentWithoutDescription", Tag(3).comment("eng", "x", "1").comment("deu", "", "2").lyrics("eng", "", "3").bytes(), {u"COMM"}, {std::string("COMM=\0engx\0001"sv), std::string("USLT=\0eng\0003"sv), stamp}},
        {"YearAndRecordingTime", Tag(4).text("TDRC", "2003-05-06").text("TALB", "A").text("TYER", "2003").bytes(), {u"TYER"}, {album, stamp}},
        {"OfVersion2", Tag(2).text("TT2", "Old").text("TAL", "A").bytes(), {u"TIT2"}, {album, stamp}},
        {"Link", Tag(3).frame("WOAR", "http://a"sv).text("TALB", "A").bytes(), {u"WOAR"}, {album, stamp}},
        // clang-format on
    };
}

class TagRemovals : public ::testing::TestWithParam<RemovalCase> {};

TEST_P(TagRemovals, RemoveTheNamedTagsAndNothingElse) {
    OpenedFile file(GetParam().tag + long_audio());
    const EditPlan plan = file.edit({.removed = {GetParam().removed}});
    EXPECT_THAT(plan.losses(), IsEmpty());
    EXPECT_EQ(frames_of(file.content()), GetParam().frames);
    EXPECT_EQ(file.content().last(long_audio().size()), long_audio());
    const Bytes once = file.content();
    EXPECT_TRUE(file.edit({.removed = {GetParam().removed}}).changes_nothing);
    EXPECT_EQ(file.content(), once);
}

INSTANTIATE_TEST_SUITE_P(, TagRemovals, ::testing::ValuesIn(removal_cases()),
                         [](const auto& instance) { return instance.param.name; });

TEST(TagRemoval, OfWhatIsNotThereLeavesTheTagAlone) {
    const Bytes content = Tag(4).utf8_text("TALB", "A").padding(50).bytes() + long_audio();
    OpenedFile file(content);
    const EditPlan plan = file.edit({.removed = {{u"TIT2"}, {u"TXXX", u"Show"}}});
    EXPECT_TRUE(plan.changes_nothing);
    EXPECT_EQ(plan.needed_length, 0);
    EXPECT_EQ(file.content(), content);
}

TEST(TagRemoval, FromAFileWithoutATagWritesNone) {
    OpenedFile file(long_audio());
    EXPECT_TRUE(file.edit({.removed = {{u"TIT2"}}}).changes_nothing);
    EXPECT_EQ(file.content(), long_audio());
}

TEST(TagRemoval, BesideAValueThatIsSet) {
    OpenedFile file(Tag(3).text("TIT2", "Old").text("TALB", "A").field("Show", "1").bytes() +
                    long_audio());
    file.header.Song(u"New");
    const EditPlan plan = file.edit({.removed = {{u"TALB"}, {u"TXXX", u"Show"}, {u"TIT2"}}});
    EXPECT_THAT(fates(plan), ElementsAre("TIT2:1 changed", "TALB:1 removed", "TXXX:1 removed"));
    EXPECT_EQ(frames_of(file.content()), (Words{title(), std::string(kStamp)}));
}

TEST(TagRemoval, IsSeenInThePreview) {
    OpenedFile file(Tag(3).text("TIT2", "Old").text("TALB", "A").padding(99) + long_audio());
    MemoryEnvironment elsewhere;
    cMPEGHeader preview(elsewhere.environment);
    const TagEdit edit(file.header, {.removed = {{u"TALB"}}});
    edit.preview(preview);
    EXPECT_EQ(preview.Album(), u"");
    EXPECT_EQ(preview.Title(), u"Old");
    EXPECT_EQ(edit.facts().text(u"TALB"), std::nullopt);
}

// --- What the plan tells

TEST(EditPlan, ReportsTheFateOfEachFrame) {
    OpenedFile file(Tag(3)
                        .frame("TIT3", Bytes{0} + letters(5000))
                        .text("TIT2", "Old")
                        .text("TALB", "A")
                        .padding(99) +
                    long_audio());
    file.header.Song(u"New");
    const EditPlan plan = file.edit();
    EXPECT_THAT(fates(plan), ElementsAre("TIT3:1 moved", "TIT2:1 changed", "TALB:1 kept"));
    EXPECT_THAT(labels(plan.oversized), ElementsAre("TIT3:1"));
    EXPECT_EQ(file.header.Album(), u"A");
    EXPECT_TRUE(file.header.Title().starts_with(u"Corrupt ID3v2 Tag"));
}

TEST(EditPlan, ReportsConversions) {
    OpenedFile file(Tag(4).utf8_text("TALB", "A").padding(99) + long_audio());
    file.header.Song(u"New");
    EXPECT_THAT(fates(file.edit()), ElementsAre("TALB:1 converted"));
}

TEST(EditPlan, NamesDuplicatesOtherCasesAndUnseenFields) {
    OpenedFile file(Tag(3)
                        .field("Cue In", "1")
                        .field("Cue In", "2")
                        .field("cue in", "3")
                        .frame("TXXX", "\1\xFF\xFEI\0n\0t\0r\0o\0\0\0\xFF\xFE\x37\0"sv)
                        .padding(99) +
                    long_audio());
    file.header.CueInmSStart(5);
    const EditPlan plan = file.edit();
    EXPECT_THAT(labels(plan.duplicates), ElementsAre("TXXX:2"));
    EXPECT_THAT(labels(plan.other_cases), ElementsAre("TXXX:3"));
    EXPECT_THAT(labels(plan.unseen), ElementsAre("TXXX:4"));
    EXPECT_EQ(file.header.CueInmSStart(), 5);
}

struct LossCase {
    const char* name;
    Bytes tag;
    Words fates;
    EditLoss loss;
};
void PrintTo(const LossCase& loss_case, std::ostream* out) {
    *out << loss_case.name;
}

class EditLosses : public ::testing::TestWithParam<LossCase> {};

TEST_P(EditLosses, AreWhatTheDocumentsMakeUnreadable) {
    OpenedFile file(GetParam().tag + long_audio());
    file.header.Song(u"New");
    const EditPlan plan = TagEdit(file.header).plan();
    EXPECT_EQ(fates(plan), GetParam().fates);
    ASSERT_EQ(plan.losses().size(), 1U);
    EXPECT_EQ(plan.losses()[0].loss, GetParam().loss);
}

INSTANTIATE_TEST_SUITE_P(
    , EditLosses,
    ::testing::Values(LossCase{"FrameCutByTheTag",
                               Tag(3).text("TALB", "A").frame_claiming("TIT3", 9, "x").bytes(),
                               {"TALB:1 kept", "TIT3:1 lost"},
                               EditLoss::CutByTagEnd},
                      LossCase{"Garbage",
                               Tag(3).text("TALB", "A").raw("garbage").bytes(),
                               {"TALB:1 kept", ":0 lost"},
                               EditLoss::NoFrame},
                      LossCase{"GarbageInThePadding",
                               Tag(3).text("TALB", "A").raw(zeros(90) + "x").bytes(),
                               {"TALB:1 kept", ":0 lost"},
                               EditLoss::NoFrame},
                      LossCase{"UnknownIdOfVersion2",
                               Tag(2).text("TAL", "A").text("TZZ", "x").bytes(),
                               {"TAL:1 converted", "TZZ:1 lost"},
                               EditLoss::UnknownId},
                      LossCase{"CompressedWithoutLength",
                               Tag(4).text("TALB", "A").raw("TIT3\0\0\0\3\0\x08xyz"sv).bytes(),
                               {"TALB:1 converted", "TIT3:1 lost"},
                               EditLoss::UnknownLength}),
    [](const auto& instance) { return instance.param.name; });

// --- How it is written

TEST(TagEdit, WritesInPlaceOnlyTheBytesThatDiffer) {
    const Bytes picture = Bytes("\0image/png\0\3\0"sv) + letters(90'000);
    OpenedFile file(Tag(3)
                        .text("TIT2", "Old")
                        .frame("TXXX", kStamp.substr(5))
                        .frame("APIC", picture)
                        .padding(99) +
                    long_audio());
    file.header.Song(u"New");
    TagEdit edit(file.header);
    EXPECT_TRUE(edit.plan().fits);
    file.files().reset_counts();
    edit.save();
    EXPECT_LT(file.files().bytes_written(), 1'000U);
}

// Beyond that the file is rebuilt, so that the old bytes need not be kept in memory, too. The stamp
// that each save writes and the value are new bytes, one after the other.
TEST(TagEdit, WritesAMebibyteInPlaceAndNotMore) {
    constexpr std::size_t kMebibyte = 1'048'576;
    constexpr std::size_t kFrameHeader = 10;
    constexpr std::size_t kStampFrame = kFrameHeader + kStamp.size() - "TXXX="sv.size();
    constexpr std::size_t kAroundValue = kFrameHeader + "\0F\0"sv.size();
    for (const auto& [length, fits] : {std::pair(kMebibyte, true), {kMebibyte + 1, false}}) {
        const std::size_t value = length - kStampFrame - kAroundValue;
        OpenedFile file(long_audio());
        file.header.CustomFieldAdd(u"F", Variant(String(value, u'a')));
        file.edit();
        file.header.CustomFieldAdd(u"F", Variant(String(value, u'b')));
        EXPECT_EQ(file.edit().fits, fits) << length;
    }
}

TEST(TagEdit, RebuildsWhereALargeFrameMoves) {
    const Bytes picture = Bytes("\0image/png\0\3\0"sv) + letters(90'000);
    OpenedFile file(Tag(3).text("TIT2", "Old").frame("APIC", picture).padding(999) + long_audio());
    file.header.Song(u"Newer");
    const EditPlan plan = file.edit();
    EXPECT_FALSE(plan.fits);
    EXPECT_EQ(frames_of(file.content()).back(), "APIC=" + picture.text());
    EXPECT_EQ(file.content().last(long_audio().size()), long_audio());
}

TEST(TagEdit, RebuildsWhereALargeFrameMovesInASmallTag) {
    // The frame is larger than what an edit in place may move, the tag by a few bytes only.
    OpenedFile file(Tag(3)
                        .field("TAGGED BY", "abc")
                        .frame("APIC", Bytes("\0image/png\0\3\0"sv) + letters(65'517))
                        .padded_to(65'600) +
                    long_audio());
    file.header.CustomFieldAdd(u"TAGGED BY", Variant(String(u"x")));
    EXPECT_FALSE(file.edit().fits);
}

// Hosts step over no larger field, so a larger one goes last.
TEST(TagEdit, LargestFieldThatHostsReadStaysInItsPlace) {
    for (const std::size_t length : {4'997U, 4'998U}) {
        OpenedFile file(Tag(3).field("F", letters(4'990)).text("TIT2", "Old").padding(99).bytes() +
                        long_audio());
        const Bytes value = repeated(length, 'b');
        file.header.CustomFieldAdd(u"F", Variant(String(length, u'b')));
        const EditPlan plan = file.edit();
        const std::string field = std::string("TXXX=\0F\0"sv) + value.text();
        const std::string title = std::string("TIT2=\0Old"sv);
        if (length == 4'997) {
            EXPECT_THAT(plan.oversized, IsEmpty());
            EXPECT_EQ(frames_of(file.content()), (Words{field, title, std::string(kStamp)}));
        } else {
            EXPECT_THAT(labels(plan.oversized), ElementsAre("TXXX:1"));
            EXPECT_EQ(frames_of(file.content()), (Words{title, std::string(kStamp), field}));
        }
    }
}

TEST(TagEdit, FieldThatHostsSeeIsNotUnseen) {
    OpenedFile file(Tag(3).field("Intro", "7").padding(99) + long_audio());
    kNewTitle(file.header);
    EXPECT_THAT(file.edit().unseen, IsEmpty());
}

TEST(TagEdit, CommonFormOfVersion2IsThatOfItsText) {
    OpenedFile file(Tag(2).frame("TT2", "\1\xFF\xFE\x41\0"sv) + long_audio());
    static_cast<void>(file.edit({.common_form = true}));
    EXPECT_THAT(frames_of(file.content()), ElementsAre(title("A"), std::string(kStamp)));
}

TEST(TagEdit, CommonFormJoinsTheTwoListsOfPeopleOfVersion4) {
    OpenedFile file(Tag(4).frame("TIPL", "\3mix\0Ann\0"sv).frame("TMCL", "\3bass\0Bo\0"sv).bytes() +
                    long_audio());
    static_cast<void>(file.edit({.common_form = true}));
    EXPECT_THAT(frames_of(file.content()),
                ElementsAre(std::string("IPLS=\0mix\0Ann\0bass\0Bo\0"sv), std::string(kStamp)));
}

// A title in ISO-8859-1 is the same in all of these; only the tag's form is another one.
TEST(TagEdit, CommonFormRewritesATagOfAnotherFormWhoseFramesStay) {
    const Tag common = Tag(3).text("TIT2", "A").padding(20);
    const auto with_flag = [](Tag tag, std::uint8_t flag) { return tag.flags(flag).bytes(); };
    constexpr std::uint8_t kUnsynchronised = 0x80;
    const std::vector<std::pair<const char*, Bytes>> tags{
        {"version 4", Tag(4).text("TIT2", "A").padding(20).bytes()},
        {"unsynchronised", with_flag(common, kUnsynchronised)},
        {"two tags", common + Tag(3).text("TPE1", "B").bytes()},
    };
    for (const auto& [name, tag] : tags) {
        SCOPED_TRACE(name);
        OpenedFile file(tag + long_audio());
        EXPECT_FALSE(file.edit({.common_form = true}).changes_nothing);
        EXPECT_THAT(frames_of(file.content()), AllOf(Contains(title("A")), Contains(kStamp)));
    }
    OpenedFile file(common + long_audio());
    EXPECT_TRUE(file.edit({.common_form = true}).changes_nothing);
    EXPECT_EQ(file.content(), common + long_audio());
}

TEST(TagEdit, LeavesTheTagAloneWhereOnlyTheRecordIsSet) {
    const Bytes tag = Tag(4).utf8_text("TIT2", "Old").padding(50).bytes();
    OpenedFile file(tag + long_audio());
    file.header.Titlev1Tag(u"New");
    const EditPlan plan = file.edit();
    EXPECT_EQ(plan.needed_length, 0);
    EXPECT_EQ(file.content().first(tag.size()), tag);
    EXPECT_EQ(file.content().size(), tag.size() + long_audio().size() + 128);
}

TEST(TagEdit, LeavesTheRecordAloneWhereNoneOfItIsSet) {
    const Bytes record = Bytes("TAG") + repeated(125, '~');
    OpenedFile file(Tag(3).padding(300) + long_audio() + record);
    file.header.CueInmSStart(1);
    file.edit();
    EXPECT_EQ(file.content().last(128), record);
    OpenedFile bare(Tag(3).padding(300) + long_audio());
    bare.header.CueInmSStart(1);
    bare.edit();
    EXPECT_EQ(bare.content().last(long_audio().size()), long_audio());
}

TEST(TagEdit, KeepsTheBytesBetweenTagAndAudio) {
    const Bytes tag = Tag(3).text("TALB", "A").padding(300).bytes();
    const Bytes junk = repeated(77, 'j');
    OpenedFile file(tag + junk + long_audio());
    file.header.Song(u"New");
    EXPECT_THAT(file.edit().losses(), IsEmpty());
    EXPECT_EQ(file.content().part(tag.size(), 77), junk);
    file.header.Composer(String(400, u'c'));
    file.edit();
    EXPECT_EQ(file.content().last(junk.size() + long_audio().size()), junk + long_audio());
}

TEST(TagEdit, KeepsTheBytesBeforeAudioWithoutATag) {
    OpenedFile file(repeated(50, 'j') + long_audio());
    file.header.Song(u"New");
    file.edit();
    EXPECT_EQ(file.content().last(50 + long_audio().size()), repeated(50, 'j') + long_audio());
    EXPECT_THAT(frames_of(file.content()), ElementsAre(title(), std::string(kStamp)));
}

TEST(TagEdit, EditsTheTagOfAShortFile) {
    OpenedFile file(Tag(3).text("TALB", "A") + stream(Frame{}, 2));
    file.header.Song(u"New");
    file.edit();
    EXPECT_THAT(frames_of(file.content()),
                ElementsAre(std::string("TALB=\0A"sv), title(), std::string(kStamp)));
}

TEST(TagEdit, WritesUtf16WhereTheCodePageHoldsNoSuchText) {
    OpenedFile file(Tag(3).padding(400) + long_audio());
    file.header.Writev1v2Separate(true);
    file.header.Title(u"\u0141");
    file.header.Album(u"\u00E9");
    file.header.Comments(u"\u0141");
    file.header.CustomFieldAdd(u"\u0141", Variant(String(u"1")));
    file.edit({.unicode = true});
    EXPECT_THAT(
        frames_of(file.content()),
        ElementsAre(std::string("TIT2=\1\xFF\xFE\x41\1"sv), std::string("TALB=\0\xE9"sv),
                    std::string("COMM=\1XXX\xFF\xFE\0\0\xFF\xFE\x41\1"sv),
                    std::string("TXXX=\1\xFF\xFE\x41\1\0\0\xFF\xFE\x31\0"sv), std::string(kStamp)));
    EXPECT_EQ(read_tag_facts(file.header).text(u"TIT2"), u"\u0141");
    EXPECT_EQ(read_tag_facts(file.header).comment(), u"\u0141");
    EXPECT_EQ(read_tag_facts(file.header).custom(u"\u0141"), u"1");
}

TEST(TagEdit, WritesUtf16WhereLatin1HoldsNoSuchTextOnDemand) {
    OpenedFile file(Tag(3).padding(400) + long_audio());
    file.header.Writev1v2Separate(true);
    // The code page has the quotation mark at 92, where ISO-8859-1 has a control character.
    file.header.Title(u"\u2019");
    file.header.Album(u"\u00E9");
    file.header.CustomFieldAdd(u"\u20AC", Variant(String(u"1")));
    file.header.CustomFieldAdd(u"a", Variant(String(u"b\nc")));
    file.edit({.unicode = true, .latin1 = true});
    EXPECT_THAT(frames_of(file.content()),
                ElementsAre(std::string("TIT2=\1\xFF\xFE\x19\x20"sv), std::string("TALB=\0\xE9"sv),
                            std::string("TXXX=\1\xFF\xFE\xAC\x20\0\0\xFF\xFE\x31\0"sv),
                            std::string("TXXX=\0a\0b\nc"sv), std::string(kStamp)));
    EXPECT_EQ(read_tag_facts(file.header).text(u"TIT2"), u"\u2019");
}

// --- Other content of frames, by the caller

EditOptions with_image(std::string_view image, std::vector<EditedPicture>* asked = nullptr) {
    return {.new_image = [=](const EditedPicture& picture) {
        if (asked != nullptr) {
            asked->push_back(picture);
        }
        const bool is_new = picture.image == std::vector<std::uint8_t>(image.begin(), image.end());
        return is_new ? std::nullopt
                      : std::optional(NewImage{u"image/new", {image.begin(), image.end()}});
    }};
}

TEST(NewImage, TakesThePlaceOfThePictures) {
    const Bytes large = letters(100'000);
    OpenedFile file(Tag(3)
                        .text("TALB", "A")
                        .frame("APIC", Bytes("\1image/png\0\3\xFF\xFE"
                                             "d\0\0\0"sv) +
                                           large)
                        .picture("image/jpeg", 4, "", "old")
                        .bytes() +
                    long_audio());
    std::vector<EditedPicture> asked;
    const EditPlan plan = file.edit(with_image("new", &asked));
    ASSERT_EQ(asked.size(), 2U);
    EXPECT_EQ(label(asked[0]), "APIC:1");
    EXPECT_EQ(asked[0].mime_type, u"image/png");
    EXPECT_EQ(asked[0].image.size(), 100'000U);
    EXPECT_EQ(asked[0].other_bytes, 9U);
    EXPECT_THAT(fates(plan), ElementsAre("TALB:1 kept", "APIC:1 changed", "APIC:2 changed"));
    EXPECT_THAT(labels(plan.rewritten), ElementsAre("APIC:1", "APIC:2"));
    EXPECT_EQ(frames_of(file.content()),
              (Words{std::string("TALB=\0A"sv),
                     std::string("APIC=\1image/new\0\3\xFF\xFE"
                                 "d\0\0\0new"sv),
                     std::string("APIC=\0image/new\0\4\0new"sv), std::string(kStamp)}));
    EXPECT_TRUE(file.edit(with_image("new")).changes_nothing);
}

TEST(NewImage, OfVersions2And4IsInAFrameOfVersion3) {
    for (const Bytes& tag : {Tag(2).picture("image/png", 3, "d", "old").bytes(),
                             Tag(4).flags(0x80).picture("image/png", 3, "d", "old").bytes()}) {
        OpenedFile file(tag + long_audio());
        file.edit(with_image("new"));
        EXPECT_EQ(frames_of(file.content()),
                  (Words{std::string("APIC=\0image/new\0\3d\0new"sv), std::string(kStamp)}));
    }
}

TEST(NewImage, IsNotAskedForWhereNoneCanBe) {
    std::vector<EditedPicture> asked;
    OpenedFile file(Tag(3)
                        .raw(Bytes("APIC\0\0\0\2\0\x40Mx"sv))  // encrypted
                        .frame("APIC", {})
                        .bytes() +
                    long_audio());
    EXPECT_TRUE(file.edit(with_image("new", &asked)).changes_nothing);
    EXPECT_THAT(asked, IsEmpty());
    for (const Bytes& cut : {Bytes("\0"sv), Bytes("\0image/png"sv), Bytes("\0image/png\0"sv),
                             Bytes("\0image/png\0\3"sv), Bytes("\0image/png\0\3d"sv),
                             Bytes("\0image/png\0\3d\0"sv), Bytes("\1image/png\0\3\xFF\xFE"sv)}) {
        OpenedFile without(Tag(3).frame("APIC", cut).bytes() + long_audio());
        EXPECT_TRUE(without.edit(with_image("new", &asked)).changes_nothing) << cut.text();
        EXPECT_THAT(asked, IsEmpty()) << cut.text();
    }
    OpenedFile other(Tag(3).picture("image/png", 3, "", "old").bytes() + long_audio());
    EditOptions options = with_image("new", &asked);
    options.removed = {{u"APIC"}};
    EXPECT_THAT(fates(other.edit(options)), ElementsAre("APIC:1 removed"));
    EXPECT_THAT(asked, IsEmpty());
}

EditOptions with_text(const String& from, const String& to) {
    return {.new_text = [=](const TagFrame&, const String& value) {
        return value == from ? std::optional(to) : std::nullopt;
    }};
}

TEST(NewText, TakesThePlaceOfTheValues) {
    OpenedFile file(Tag(3)
                        .text("TIT2", "old")
                        .text("TALB", "other")
                        .comment("eng", "d", "old")
                        .field("F", "old")
                        .frame("IPLS", "\0P\0old\0"sv)
                        .frame("OWNE",
                               "\0old\0"
                               "20260101old"sv)
                        .frame("PRIV", "old"sv)
                        .bytes() +
                    long_audio());
    const EditPlan plan = file.edit(with_text(u"old", u"n\u00E9"));
    EXPECT_THAT(labels(plan.rewritten), ElementsAre("TIT2:1", "COMM:1", "TXXX:1", "IPLS:1"));
    EXPECT_EQ(frames_of(file.content()),
              (Words{std::string("TIT2=\0n\xE9"sv), std::string("TALB=\0other"sv),
                     std::string("COMM=\0engd\0n\xE9"sv), std::string("TXXX=\0F\0n\xE9"sv),
                     std::string("IPLS=\0P\0n\xE9"sv),
                     std::string("OWNE=\0old\0"
                                 "20260101old"sv),
                     "PRIV=old", std::string(kStamp)}));
    EXPECT_TRUE(file.edit(with_text(u"old", u"new")).changes_nothing);
}

// Version 2.3 has no UTF-8, but many writers use it there.
TEST(NewText, OfUtf8InVersion3) {
    OpenedFile file(Tag(3).utf8_text("TIT2", "old").bytes() + long_audio());
    file.edit(with_text(u"old", u"new"));
    EXPECT_EQ(frames_of(file.content()), (Words{std::string("TIT2=\0new"sv), std::string(kStamp)}));
}

TEST(NewText, OutsideLatin1IsUtf16) {
    OpenedFile file(Tag(3).field("F", "old").bytes() + long_audio());
    file.edit(with_text(u"old", u"\u0416"));
    EXPECT_EQ(frames_of(file.content()), (Words{std::string("TXXX=\1\xFF\xFE"
                                                            "F\0\0\0\xFF\xFE\x16\4"sv),
                                                std::string(kStamp)}));
    EXPECT_EQ(read_tag_facts(file.header).custom(u"F"), u"\u0416");
}

TEST(NewText, OfOneOfSeveralValues) {
    OpenedFile file(Tag(4).utf8_text("TPE1", "a\0old"sv).bytes() + long_audio());
    file.edit(with_text(u"old", u"new"));
    EXPECT_EQ(frames_of(file.content()),
              (Words{std::string("TPE1=\0a\0new"sv), std::string(kStamp)}));
}

// --- Tags of other programs

const Bytes& foreign_tag() {
    static const Bytes tag = repeated(500, '~');
    return tag;
}

const Bytes& old_record() {
    static const Bytes record = Bytes("TAG") + repeated(125, '.');
    return record;
}

EditOptions without_foreign_tag(const Bytes& before) {
    const auto begin = static_cast<std::int64_t>(before.size());
    return {.left_out_from = begin,
            .left_out_to = begin + static_cast<std::int64_t>(foreign_tag().size())};
}

TEST(LeftOutBytes, GoAndNothingElse) {
    for (const Bytes& tag : {Bytes(), Tag(4).utf8_text("TIT2", "Old").padding(50).bytes()}) {
        for (const Bytes& record : {Bytes(), old_record()}) {
            const Bytes before = tag + long_audio();
            OpenedFile file(before + foreign_tag() + record);
            const EditPlan plan = file.edit(without_foreign_tag(before));
            EXPECT_FALSE(plan.changes_nothing);
            EXPECT_FALSE(plan.loses_stream);
            EXPECT_EQ(plan.needed_length, 0);
            EXPECT_EQ(file.content(), before + record);
        }
    }
}

TEST(LeftOutBytes, GoTogetherWithAnEdit) {
    const Bytes before = Tag(3).text("TIT2", "Old").padding(300) + long_audio();
    OpenedFile file(before + foreign_tag() + old_record());
    file.header.Title(u"New");
    file.header.Titlev1Tag(u"New");
    const NewContent content = TagEdit(file.header, without_foreign_tag(before)).content();
    EXPECT_EQ(content.kept_to, static_cast<std::int64_t>(before.size()));
    EXPECT_EQ(content.back.size(), 128U);
    file.edit(without_foreign_tag(before));
    EXPECT_THAT(frames_of(file.content()), ElementsAre(title(), std::string(kStamp)));
    EXPECT_EQ(file.content().size(), before.size() + 128);
    EXPECT_EQ(file.content().last(128).part(0, 6), Bytes("TAGNew"));
    EXPECT_EQ(file.content().last(128 + long_audio().size()).first(long_audio().size()),
              long_audio());
}

TEST(LeftOutBytes, MustBeThere) {
    OpenedFile file(long_audio());
    const auto size = static_cast<std::int64_t>(long_audio().size());
    EXPECT_THROW(TagEdit(file.header, {.left_out_from = -1, .left_out_to = 1}), Error);
    EXPECT_THROW(TagEdit(file.header, {.left_out_from = 2, .left_out_to = 1}), Error);
    EXPECT_THROW(TagEdit(file.header, {.left_out_from = 0, .left_out_to = size + 1}), Error);
}

TEST(LeftOutBytes, TellWhenTheStreamGoes) {
    OpenedFile file(long_audio());
    const auto size = static_cast<std::int64_t>(long_audio().size());
    EXPECT_TRUE(
        TagEdit(file.header, {.left_out_from = 100, .left_out_to = size}).plan().loses_stream);
}

TEST(TagEdit, NeedsAFile) {
    const cMPEGHeader empty;
    EXPECT_THROW(TagEdit{empty}, Error);
    OpenedFile file(long_audio());
    file.header.Song(u"New");
    file.files().remove(kSong);
    EXPECT_THROW(TagEdit(file.header), Error);
}

TEST(TagEdit, EndsWhereTheHostRefusesTheChange) {
    OpenedFile file(Tag(3).padding(300) + long_audio());
    const Bytes before = file.content();
    file.header.Song(u"New");
    TagEdit edit(file.header);
    EXPECT_THROW(
        edit.save({.before_change = [](SaveWay) { throw Error(RuntimeError::PermissionDenied); }}),
        Error);
    EXPECT_EQ(file.content(), before);
}

}  // namespace
}  // namespace brindle::test
