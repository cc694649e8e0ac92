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
#include "support/memory_environment.h"
#include "support/tags.h"
#include "support/written_files.h"

namespace brindle {
namespace {

using test::blank_record;
using test::Bytes;
using test::FileCall;
using test::Id3v1;
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
        header_.SaveAllInfo();
        return content();
    }
    [[nodiscard]] const Bytes& content() const { return world_.files.content(kName); }
    std::optional<Error> error_of_saving() {
        try {
            header_.SaveAllInfo();
        } catch (const Error& error) {
            return error;
        }
        return std::nullopt;
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

TEST_F(SavingHost, NothingIsWrittenWhenTheObjectGoes) {
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

TEST_F(SavingHost, StripTakesOffWhatIsNamedAndReadsTheFileAgain) {
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
