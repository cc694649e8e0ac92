// SaveAllInfo and StripTags as a host meets them.
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/error.h>

#include "support/bytes.h"
#include "support/frames.h"
#include "support/id3v1.h"
#include "support/made_content.h"
#include "support/memory_environment.h"
#include "support/raised_error.h"
#include "support/tags.h"
#include "support/written_files.h"

namespace brindle {
namespace {

using test::blank_record;
using test::Bytes;
using test::FileCall;
using test::Id3v1;
using test::made_of;
using test::stamped;
using test::Tag;

using namespace std::string_literals;

const String kName = u"song.mp3";
const Bytes kAudio = test::stream({}, 120);
const Bytes kRecord = Id3v1{.title = "Old", .artist = "Old", .year = "1970", .filler = ' '}.bytes();

class SavingHost : public ::testing::Test {
protected:
    void open(const Bytes& content) {
        world_.files.put(kName, content);
        header_.FileName(kName);
        world_.files.reset_counts();
    }
    const Bytes& saved() {
        Bytes promised = content();
        const auto keep = [&](const NewContent& made) { promised = made_of(promised, made); };
        header_.SaveAllInfo({.before_write = keep});
        EXPECT_EQ(content(), promised);
        return content();
    }
    [[nodiscard]] const Bytes& content() const { return world_.files.content(kName); }
    std::optional<Error> error_of_saving() {
        return test::raised_error([&] { header_.SaveAllInfo(); });
    }

    test::MemoryEnvironment world_;
    cMPEGHeader header_{world_.environment};
};

TEST_F(SavingHost, WithoutAFileNameMeetsItsOwnError) {
    const auto error = error_of_saving();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), -896556);
    EXPECT_EQ(error->number(), static_cast<std::int32_t>(0xFFF251D4U));
    EXPECT_EQ(error->description(), u"FileName is Not set");
}

TEST_F(SavingHost, WithANameThatIsNotOpenedSavesNothingAndSucceeds) {
    for (const String& name : {u"sound.wav"s, u"a"s, u""s, u"missing.mp3"s}) {
        header_.FileName(name);
        EXPECT_FALSE(error_of_saving()) << name.size();
    }
    EXPECT_EQ(world_.files.names(), std::vector<String>());
}

TEST_F(SavingHost, TitleArtistAndYearFollowIntoTheRecord) {
    open(kAudio);
    header_.Title(u"Song");
    header_.Artist(u"Duo");
    header_.Year(1999);
    EXPECT_EQ(header_.Titlev1Tag(), u"Song");
    EXPECT_EQ(header_.Yearv1Tag(), 1999);
    const Tag tag = Tag().text("TIT2", "Song").text("TPE1", "Duo").text("TYER", "1999");
    const Id3v1 record{.title = "Song", .artist = "Duo", .year = "1999", .filler = ' '};
    EXPECT_EQ(saved(), stamped(tag).padded_to(2048).bytes() + kAudio + record.bytes());
}

TEST_F(SavingHost, SeparateLeavesTheRecordAlone) {
    open(kAudio + kRecord);
    header_.Writev1v2Separate(true);
    header_.Title(u"Song");
    header_.Artist(u"Duo");
    header_.Year(1999);
    EXPECT_EQ(header_.Yearv1Tag(), 1970);
    const Tag tag = Tag().text("TIT2", "Song").text("TPE1", "Duo").text("TYER", "1999");
    EXPECT_EQ(saved(), stamped(tag).padded_to(2048).bytes() + kAudio + kRecord);
}

TEST_F(SavingHost, OtherPropertiesNeverTouchTheRecord) {
    open(kAudio + kRecord);
    header_.Song(u"Song");
    header_.Album(u"Disc");
    header_.Comments(u"x");
    header_.Genre(u"17");
    header_.Track(3);
    EXPECT_EQ(header_.Title(), u"Song");
    EXPECT_EQ(header_.Titlev1Tag(), u"Old");
    EXPECT_EQ(saved().last(128), kRecord);
}

TEST_F(SavingHost, RecordFieldsAreWrittenToTheirWidths) {
    open(kAudio);
    header_.Titlev1Tag(u"0123456789012345678901234567890123");
    header_.Commentv1(u"Hi");
    header_.Yearv1Tag(19'991);
    EXPECT_EQ(saved().last(128), (Id3v1{.title = "012345678901234567890123456789",
                                        .year = "1999",
                                        .comment = "Hi",
                                        .filler = ' '}
                                      .bytes()));
}

TEST_F(SavingHost, GenreThatIsNoNumberOfAByteChangesNothing) {
    open(kAudio);
    for (const String& genre : {u"Blues"s, u"256"s, u"-1"s, u""s}) {
        header_.Genre(genre);
    }
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + kAudio + blank_record());
}

TEST_F(SavingHost, SchedulingFieldsAreWrittenUnderTheirNames) {
    open(kAudio);
    header_.Sectone(1);
    header_.Speed(1.25);
    header_.Volume(-3);
    header_.Opener(5);
    header_.CueInmSStart(1500);
    header_.CategoryLevel(u"4");
    header_.Category(String(u"Jingles"));
    header_.Intro(12);
    header_.OutromsStart(34);
    header_.Endstyle(u"Fade");
    header_.NoFade(2);
    header_.Agency(u"A");
    header_.AccountExec(u"B");
    header_.Copy(u"C");
    header_.CustomFieldAdd(u"Own", 12.5);
    Tag tag;
    tag.field(test::kStampName, test::kSavedStamp).field("Sec Tone", "1");
    tag.field("TarnSpeed", "1.25").field("Volume", "-3").field("Opener", "-1");
    tag.field("Cue In", "1500").field("CatLevel", "4").field("Category", "Jingles");
    tag.field("Intro", "12").field("OutromSStart", "34").field("End", "Fade");
    tag.field("NoFade", "2").field("Agency", "A").field("Account Exec", "B").field("Copy", "C");
    tag.field("Own", "12.5");
    EXPECT_EQ(saved(), tag.padded_to(2048).bytes() + kAudio + blank_record());
}

TEST_F(SavingHost, EditsAreLostWhenTheFileIsAssignedAgain) {
    open(kAudio);
    header_.Title(u"Lost");
    header_.FileName(kName);
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + kAudio + blank_record());
}

TEST_F(SavingHost, NothingIsWrittenWhenTheObjectIsDestroyed) {
    world_.files.put(kName, kAudio);
    {
        cMPEGHeader other(world_.environment);
        other.FileName(kName);
        other.Title(u"Lost");
    }
    EXPECT_EQ(content(), kAudio);
}

TEST_F(SavingHost, SaveRaisesNoEvent) {
    open(kAudio);
    int events = 0;
    header_.Reading = [&](const String&) { ++events; };
    header_.Scanning = [&](const String&, std::int32_t, std::int32_t, bool&) { ++events; };
    header_.DurationNeeded = [&](std::int32_t&) { ++events; };
    saved();
    EXPECT_EQ(events, 0);
}

// 0.5 s a read: an analysis that the host may hear would report.
TEST_F(SavingHost, SearchForMovedAudioIsNotHeard) {
    Bytes variable;
    for (std::size_t number = 0; number < 2000; ++number) {
        variable += test::Frame{}.with_kbps(number % 2 == 0 ? 128 : 160).bytes(number);
    }
    open(Tag().padded_to(300) + variable);
    int events = 0;
    header_.Scanning = [&](const String&, std::int32_t, std::int32_t, bool&) { ++events; };
    world_.clock.step = 1.0;
    world_.files.put(kName, Tag().padded_to(5000) + variable);
    saved();
    EXPECT_EQ(events, 0);
    header_.FileName(kName);
    EXPECT_GT(events, 0) << "the same analysis is heard when the host asks for it";
}

// The stamp is set before the record is planned, so it is there though the save has failed.
TEST_F(SavingHost, StampIsSetBeforeTheRecordIsWritten) {
    open(kAudio);
    world_.files.put(kName, {});
    const auto error = error_of_saving();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), -2147217407);
    EXPECT_EQ(header_.v2Tag(u"TXXX", 1), String(u"TAGGED BY\0CorvaneTagger- Revised Feb 2011", 41));
}

// Audio is not looked for again where this object itself has moved it.
TEST_F(SavingHost, SecondSaveAfterARebuildReadsTheTagAlone) {
    open(kAudio + test::stream({}, 3000));
    header_.Title(u"Song");
    saved();
    const Bytes once = content();
    world_.files.reset_counts();
    saved();
    EXPECT_EQ(content(), once);
    EXPECT_EQ(world_.files.calls(FileCall::Create), 0U);
    EXPECT_LT(world_.files.bytes_read(), 6000U);
}

TEST_F(SavingHost, FileThatCannotBeSeenAnyMoreIsAnError) {
    open(kAudio);
    // As of a folder that may no longer be entered: nothing exists for this program.
    world_.files.fail(
        {.nth = 1, .from_then_on = true, .error = Error(RuntimeError::PathFileAccess)});
    const auto error = error_of_saving();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), 75);
}

TEST_F(SavingHost, MissingFileIsNotSavedAndRaisesNoError) {
    open(kAudio);
    world_.files.remove(kName);
    EXPECT_FALSE(error_of_saving());
    EXPECT_EQ(world_.files.names(), std::vector<String>());
}

TEST_F(SavingHost, FileChangedByAnotherProgramIsNotWritten) {
    for (const Bytes& old : {Tag().padded_to(4000) + kAudio, kAudio}) {
        for (const SaveOptions& options : {SaveOptions{}, SaveOptions{.atomic = true}}) {
            open(old);
            header_.Title(u"Song");
            world_.files.after_each_read([&] {
                world_.files.after_each_read(nullptr);
                const auto file = world_.files.open(kName, OpenMode::ReadWrite);
                file->write_at(static_cast<std::int64_t>(old.size()), Bytes("more"));
                file->close();
            });
            try {
                header_.SaveAllInfo(options);
                ADD_FAILURE() << "nothing was raised";
            } catch (const Error& error) {
                EXPECT_EQ(error.number(), 70);
            }
            EXPECT_EQ(content(), old + "more");
            EXPECT_EQ(world_.files.names(), std::vector<String>{kName});
        }
    }
}

// --- the choices of C++ hosts

TEST_F(SavingHost, AtomicSaveWritesWhatTheOtherOneWrites) {
    for (const bool shares : {false, true}) {
        for (const Bytes& old :
             {Tag().padded_to(600) + kAudio, Tag().padded_to(600) + kAudio + kRecord, kAudio}) {
            open(old);
            header_.Title(u"Song");
            const Bytes expected = saved();
            open(old);
            if (shares) {
                world_.files.let_files_share();
            }
            header_.Title(u"Song");
            header_.SaveAllInfo({.atomic = true});
            EXPECT_EQ(content(), expected);
            EXPECT_EQ(world_.files.calls(FileCall::Replace), 1U);
            EXPECT_EQ(world_.files.calls(FileCall::FlushData), 0U);
            const bool fits = old.first(3) == Bytes("ID3");
            EXPECT_EQ(world_.files.calls(FileCall::Clone), fits ? 1U : 0U);
            EXPECT_EQ(world_.files.calls(FileCall::Copy) == 0, fits && shares);
        }
    }
}

TEST_F(SavingHost, LastWordBeforeAChangeIsTheHosts) {
    const auto refused = [&](const Bytes& old, bool atomic, SaveWay expected) {
        open(old);
        header_.Title(u"Song");
        SaveOptions options{.atomic = atomic};
        std::vector<SaveWay> ways;
        options.before_change = [&](SaveWay way) {
            ways.push_back(way);
            EXPECT_EQ(content(), old);
            throw Error(RuntimeError::PermissionDenied);
        };
        try {
            header_.SaveAllInfo(options);
            ADD_FAILURE() << "nothing was raised";
        } catch (const Error& error) {
            EXPECT_EQ(error.number(), 70);
        }
        EXPECT_EQ(ways, std::vector<SaveWay>{expected});
        EXPECT_EQ(content(), old);
        EXPECT_EQ(world_.files.names(), std::vector<String>{kName});
    };
    refused(Tag().padded_to(600) + kAudio, false, SaveWay::InPlace);
    refused(Tag().padded_to(600) + kAudio, true, SaveWay::Replace);
    refused(kAudio, false, SaveWay::Replace);
    refused(Tag(2).text("TT2", "Old").padded_to(600) + kAudio, false, SaveWay::Replace);
}

TEST_F(SavingHost, RemoveTagsRaisesTheErrorThatStripTagsHides) {
    const Bytes endless = Tag().padding(90).size(90'000).bytes() + test::repeated(6000, 0x55);
    open(endless);
    EXPECT_FALSE(header_.StripTags(v2TagOnly));
    try {
        header_.RemoveTags(v2TagOnly);
        FAIL() << "nothing was raised";
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), 5);
        EXPECT_EQ(error.description(),
                  u"The tag claims more bytes than the file holds, and no "
                  u"audio tells where it ends");
    }
    EXPECT_EQ(content(), endless);
    open(Tag().padded_to(600) + kAudio + kRecord);
    header_.RemoveTags(v1andv2TagsBothPresent);
    EXPECT_EQ(content(), kAudio);
    EXPECT_EQ(header_.TagType(), -1);
    cMPEGHeader fresh(world_.environment);
    EXPECT_THROW(fresh.RemoveTags(v1TagOnly), Error);
}

// Files of 4,098 to 4,225 bytes have a tag as long as they have their record, too.
TEST_F(SavingHost, BothTagsOfAShortFileGo) {
    const Bytes audio = test::stream({}, 9);
    for (const std::size_t length : {4098U, 4150U, 4225U}) {
        const std::size_t tag = length - audio.size() - 128;
        open(Tag().padded_to(tag) + audio + kRecord);
        ASSERT_EQ(content().size(), length);
        ASSERT_EQ(header_.TagType(), v1andv2TagsBothPresent);
        EXPECT_TRUE(header_.StripTags(v1andv2TagsBothPresent));
        EXPECT_EQ(content(), audio);
    }
}

TEST_F(SavingHost, ErrorsOfTheWriterReachTheHostUnchanged) {
    open(kAudio);
    world_.files.fail(
        {.call = FileCall::Replace, .error = Error(RuntimeError::PermissionDenied, u"the disk")});
    const auto error = error_of_saving();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), 70);
    EXPECT_EQ(error->description(), u"Permission denied");
    EXPECT_EQ(error->source(), u"BrindleID3v2Tagger");
    EXPECT_EQ(content(), kAudio);
}

TEST_F(SavingHost, HostThatYieldsDuringACopyCannotDisturbIt) {
    open(test::stream({}, 3000));
    std::vector<std::int32_t> errors;
    int strips = 0;
    header_.OnYield = [&] {
        header_.FileName(u"other.mp3");
        strips += header_.StripTags(v1andv2TagsBothPresent) ? 1 : 0;
        const auto error = error_of_saving();
        errors.push_back(error ? error->number() : 0);
    };
    EXPECT_EQ(saved(),
              stamped(Tag()).padded_to(2048).bytes() + test::stream({}, 3000) + blank_record());
    EXPECT_EQ(errors, (std::vector<std::int32_t>{5, 5, 5}));
    EXPECT_EQ(strips, 0);
    EXPECT_EQ(header_.FileName(), kName);
}

TEST_F(SavingHost, StripRemovesTheNamedTagsAndReadsTheFileAgain) {
    struct Row {
        eTagType tags;
        Bytes left;
        std::int32_t type;
    };
    const Bytes tag = Tag().text("TIT2", "Song").padded_to(600).bytes();
    for (const Row& row :
         {Row{NoTags, tag + kAudio + kRecord, 3}, Row{v1TagOnly, tag + kAudio, 2},
          Row{v2TagOnly, kAudio + kRecord, 1}, Row{v1andv2TagsBothPresent, kAudio, -1}}) {
        open(tag + kAudio + kRecord);
        header_.Title(u"Lost");
        std::vector<String> read;
        header_.Reading = [&](const String& name) { read.push_back(name); };
        EXPECT_TRUE(header_.StripTags(row.tags));
        header_.Reading = nullptr;
        EXPECT_EQ(read, std::vector<String>{kName});
        EXPECT_EQ(content(), row.left);
        EXPECT_EQ(header_.TagType(), row.type);
        EXPECT_EQ(header_.FileName(), kName);
        EXPECT_EQ(header_.Title(), row.type >= 2 ? u"Song" : u"");
        EXPECT_FALSE(header_.RepairRequired());
    }
}

TEST_F(SavingHost, StripThatFailsIsFalseAndReadsTheFileAgainAllTheSame) {
    const Bytes old = Tag().text("TIT2", "Song").padded_to(600) + kAudio;
    open(old);
    header_.Title(u"Lost");
    world_.files.fail({.call = FileCall::Replace});
    EXPECT_FALSE(header_.StripTags(v2TagOnly));
    EXPECT_EQ(content(), old);
    EXPECT_EQ(header_.Title(), u"Song");
    EXPECT_EQ(world_.files.names(), std::vector<String>{kName});
}

TEST_F(SavingHost, StripWithoutAFileIsFalse) {
    EXPECT_FALSE(header_.StripTags(v1andv2TagsBothPresent));
}

TEST_F(SavingHost, StripRightAfterASaveLeavesTheAudio) {
    open(kAudio);
    header_.Title(u"Song");
    saved();
    EXPECT_TRUE(header_.StripTags(v1andv2TagsBothPresent));
    EXPECT_EQ(content(), kAudio);
}

TEST_F(SavingHost, TagTypeAfterASaveIsThatOfTheFileAsItWasAssigned) {
    open(kAudio);
    header_.Title(u"Song");
    header_.SaveAllInfo();
    EXPECT_EQ(header_.TagType(), -1);
    header_.FileName(kName);
    EXPECT_EQ(header_.TagType(), v1andv2TagsBothPresent);
}

TEST_F(SavingHost, TagTypeAfterASaveOfAVersion2TagIsThatOfTheFileWithoutIt) {
    open(Tag(2).text("TT2", "Song").padded_to(3000) + kAudio);
    EXPECT_EQ(header_.TagType(), v2TagOnly);
    header_.SaveAllInfo();
    EXPECT_EQ(header_.TagType(), v1TagOnly);
    header_.FileName(kName);
    EXPECT_EQ(header_.TagType(), v1andv2TagsBothPresent);
}

TEST_F(SavingHost, RepairIsNoLongerRequiredAfterASave) {
    open(Tag().padded_to(600) + test::repeated(100, 0x55) + kAudio);
    EXPECT_TRUE(header_.RepairRequired());
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(700).bytes() + kAudio + blank_record());
    header_.FileName(kName);
    EXPECT_FALSE(header_.RepairRequired());
    EXPECT_EQ(header_.ID3TagSizeIncludingHeader(), 700);
}

}  // namespace
}  // namespace brindle
