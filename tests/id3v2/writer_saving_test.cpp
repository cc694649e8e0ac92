// What Update leaves in a file, byte for byte.
#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/error.h>

#include "id3v2/cMP3ID3v2.h"
#include "support/bytes.h"
#include "support/frames.h"
#include "support/id3v1.h"
#include "support/memory_environment.h"
#include "support/raised_error.h"
#include "support/tags.h"
#include "support/written_files.h"

namespace brindle {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using test::blank_record;
using test::Bytes;
using test::FileCall;
using test::Frame;
using test::Id3v1;
using test::Mode;
using test::stamped;
using test::Tag;
using test::title_for;
using test::wide;

const String kName = u"song.mp3";
const String kReader = u"BrindleId3v1Tagger";
const String kWriter = u"BrindleID3v2Tagger";
const Frame kFrame;  // 417 bytes
const Bytes kAudio = test::stream(kFrame, 120);

Bytes junk(std::size_t count) {
    return test::repeated(count, 0x55);
}

class CountingHost : public Host {
public:
    void RaiseScanningEvent(const String&, std::int32_t, std::int32_t, bool&) override {
        ++scannings;
    }
    void yield() override { ++yields; }
    void show_message(const String&) override { ++messages; }

    int scannings = 0;
    int yields = 0;
    int messages = 0;
};

class Saving : public ::testing::Test {
protected:
    void open(const Bytes& content) {
        put(content);
        model_.Owner = &host_;
        model_.FileName(kName);
        world_.files.reset_counts();
    }
    void put(const Bytes& content) { world_.files.put(kName, content); }
    // The file after a save, and nothing else there.
    const Bytes& saved() {
        model_.Update();
        EXPECT_EQ(world_.files.names(), std::vector<String>{kName});
        EXPECT_EQ(world_.files.open_files(), 0U);
        return content();
    }
    [[nodiscard]] const Bytes& content() const { return world_.files.content(kName); }
    Error error_of_saving() {
        return test::required_error([&] { model_.Update(); });
    }

    test::MemoryEnvironment world_;
    CountingHost host_;
    cMP3ID3v2 model_{world_.environment};
};

// --- a file without a tag ---

TEST_F(Saving, FileWithoutATagAndANeedOf1000BytesGets2048) {
    open(kAudio);
    model_.Title(wide(title_for(1000)));
    const Bytes expected = stamped(Tag().text("TIT2", title_for(1000))).padded_to(2048).bytes() +
                           kAudio + blank_record();
    EXPECT_EQ(expected.part(6, 4), Bytes("\0\0\x0F\x76"sv));  // 2,038
    EXPECT_EQ(saved(), expected);
}

TEST_F(Saving, NeedOfExactly2048BytesGets4096) {
    open(kAudio);
    model_.Title(wide(title_for(2048)));
    EXPECT_EQ(saved(), stamped(Tag().text("TIT2", title_for(2048))).padded_to(4096).bytes() +
                           kAudio + blank_record());
}

TEST_F(Saving, NeedOf2047BytesGets2048) {
    open(kAudio);
    model_.Title(wide(title_for(2047)));
    EXPECT_EQ(saved(), stamped(Tag().text("TIT2", title_for(2047))).padded_to(2048).bytes() +
                           kAudio + blank_record());
}

TEST_F(Saving, WithoutAnyEditTheStampAloneIsWritten) {
    open(kAudio);
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + kAudio + blank_record());
}

TEST_F(Saving, JunkInFrontOfTheAudioIsRemovedWhenATagIsMade) {
    open(junk(100) + kAudio);
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + kAudio + blank_record());
}

TEST_F(Saving, FileWithoutAudioKeepsEveryByteAfterItsNewTag) {
    open(junk(6000));
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + junk(6000) + blank_record());
}

TEST_F(Saving, FileOf128BytesGetsATagAndNoRecord) {
    open(junk(128));
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + junk(128));
}

// --- a tag that fits, a tag that does not ---

TEST_F(Saving, NeedOf3000BytesIsWrittenInPlaceInto4096) {
    const Bytes old_tag = Tag().text("TIT2", "Old").text("TALB", "Disc").padded_to(4096).bytes();
    open(old_tag + kAudio + Id3v1{.title = "Old"}.bytes());
    // TIT2 leaves the list and comes back after TALB, whose frame takes 10 + 5 bytes.
    model_.Title(wide(title_for(3000 - 15)));
    const Bytes expected =
        stamped(Tag().text("TALB", "Disc").text("TIT2", title_for(3000 - 15))).padded_to(4096) +
        kAudio + Id3v1{.title = "Old"}.bytes();
    EXPECT_EQ(expected.part(3000, 1096), test::zeros(1096));
    EXPECT_EQ(expected.part(6, 4), old_tag.part(6, 4));
    EXPECT_EQ(saved(), expected);
    EXPECT_EQ(world_.files.calls(FileCall::Replace), 0U);
    EXPECT_EQ(world_.files.bytes_written(), 4096U + 125U);
}

TEST_F(Saving, NeedOf4095BytesStillFitsInto4096) {
    open(Tag().padded_to(4096) + kAudio);
    model_.Title(wide(title_for(4095)));
    EXPECT_EQ(saved(), stamped(Tag().text("TIT2", title_for(4095))).padded_to(4096).bytes() +
                           kAudio + blank_record());
    EXPECT_EQ(world_.files.calls(FileCall::Replace), 0U);
}

TEST_F(Saving, NeedOf4096BytesIn4096IsRebuiltWith6144) {
    open(Tag().padded_to(4096) + kAudio);
    model_.Title(wide(title_for(4096)));
    EXPECT_EQ(saved(), stamped(Tag().text("TIT2", title_for(4096))).padded_to(6144).bytes() +
                           kAudio + blank_record());
    EXPECT_EQ(world_.files.calls(FileCall::Replace), 1U);
}

TEST_F(Saving, RecordIsWrittenBeforeTheTagAndRemovedWhenTheTagCannotBeWritten) {
    const Bytes old = Tag().padded_to(600) + kAudio;
    open(old);
    world_.files.fail({.nth = 2, .call = FileCall::Write});
    EXPECT_EQ(error_of_saving().source(), kWriter);
    EXPECT_EQ(content(), old);
    EXPECT_EQ(world_.files.calls(FileCall::SetLength), 1U);
}

TEST_F(Saving, TagOfASizeThatIsNoMultipleOf2048KeepsIt) {
    open(Tag().padded_to(777) + kAudio);
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(777).bytes() + kAudio + blank_record());
}

TEST_F(Saving, JunkAfterATagBecomesPaddingOfATagWrittenInPlace) {
    open(Tag().text("TALB", "Disc").padded_to(100) + junk(50) + kAudio);
    EXPECT_EQ(saved(),
              stamped(Tag().text("TALB", "Disc")).padded_to(150).bytes() + kAudio + blank_record());
}

TEST_F(Saving, SecondTagAfterTheFirstIsMergedIntoIt) {
    open(Tag().text("TALB", "Disc").padded_to(300) +
         Tag().text("TPE1", "Duo").padded_to(200).bytes() + kAudio);
    EXPECT_EQ(saved(),
              stamped(Tag().text("TALB", "Disc").text("TPE1", "Duo")).padded_to(500).bytes() +
                  kAudio + blank_record());
}

TEST_F(Saving, RevisionAndFlagsOfTheOldTagAreCleared) {
    open(Tag().revision(7).flags(0x40).padded_to(600) + kAudio);
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(600).bytes() + kAudio + blank_record());
}

TEST_F(Saving, Version4IsWrittenAsVersion3WithItsFrames) {
    open(Tag(4).text("TIT2", "Song").field("Cue In", "1500").padded_to(600) + kAudio);
    EXPECT_EQ(saved(),
              stamped(Tag(3).text("TIT2", "Song").field("Cue In", "1500")).padded_to(600).bytes() +
                  kAudio + blank_record());
}

TEST_F(Saving, PicturesPassThroughByteForByte) {
    Bytes data;
    for (int i = 0; i < 3000; ++i) {
        data.push_back(static_cast<std::uint8_t>(i * 7 % 256));
    }
    const Tag tag = Tag().picture("image/png", 3, "Front", data).picture("image/jpeg", 4, "", data);
    open(Tag(tag).padded_to(10'000) + kAudio);
    EXPECT_EQ(saved(), stamped(tag).padded_to(10'000).bytes() + kAudio + blank_record());
}

// --- what is held and what is written ---

TEST_F(Saving, CommentIsWrittenWithItsHalfLanguage) {
    open(kAudio);
    model_.Comment(u"x");
    const Bytes body = "\0\x00nt\0x"sv;
    EXPECT_EQ(body, (Bytes{0x00, 0x00, 0x6E, 0x74, 0x00, 0x78}));
    EXPECT_EQ(saved(),
              stamped(Tag().frame("COMM", body)).padded_to(2048).bytes() + kAudio + blank_record());
}

TEST_F(Saving, EachPropertyIsWrittenAsHeld) {
    open(kAudio);
    model_.ArtistUrl(u"a");
    model_.BuyURL(u"b");
    model_.AudioURL(u"c");
    model_.CopyRight(u"d");
    model_.Composer(u"e");
    model_.OriginalArtist(u"f");
    model_.LinkTo(u"g");
    model_.PlayCounter(u"h");
    model_.EncodedBy(u"i");
    model_.Title(u"j");
    model_.Artist(u"k");
    model_.Album(u"l");
    model_.Year(u"m");
    model_.Lyrics(u"n");
    model_.Genre(17);
    model_.OtherGenreName(u"o");
    model_.Track(u"p");
    model_.Publisher(u"q");
    Tag tag;
    tag.text("WOAR", "a").text("WCOM", "b").text("WOAF", "c").text("TCOP", "d").text("TCOM", "e");
    tag.text("TOPE", "f").frame("WXXX", "\0\0g"sv).text("PCNT", "h").text("TENC", "i");
    tag.text("TIT2", "j").text("TPE1", "k").text("TALB", "l").text("TYER", "m");
    tag.frame("USLT", "\0\0n"sv).text("TCON", "(17)o").text("TRCK", "p").text("TPUB", "q");
    EXPECT_EQ(saved(), stamped(tag).padded_to(2048).bytes() + kAudio + blank_record());
}

TEST_F(Saving, EmptyTitleIsWrittenAsAnEmptyFrame) {
    open(Tag().text("TIT2", "Song").padded_to(600) + kAudio);
    model_.Title(u"");
    EXPECT_EQ(saved(),
              stamped(Tag().text("TIT2", "")).padded_to(600).bytes() + kAudio + blank_record());
}

TEST_F(Saving, StampReplacesTheOneOfAFirstCustomField) {
    open(kAudio);
    model_.CueIn(1500);
    EXPECT_EQ(model_.Tag(u"TXXX", 1), u"TAGGED BY\0CorvaneTagger - Revised Feb 2011"s);
    EXPECT_EQ(saved(), Tag().field(test::kStampName, test::kSavedStamp)
                               .field("Cue In", "1500")
                               .padded_to(2048)
                               .bytes() +
                           kAudio + blank_record());
}

TEST_F(Saving, StampIsLostWhereTheFirstOfTwoLoneCustomFieldsWasReplaced) {
    const Tag two = Tag().field("Intro", "5").field("x", "y");
    open(two.bytes() + kAudio);
    model_.AddCustomField(u"Intro", u"6");
    EXPECT_EQ(saved(), Tag().field("Intro", "6").field("x", "y").padded_to(2048).bytes() + kAudio +
                           blank_record());
    open(Tag(two).text("TIT2", "Song").bytes() + kAudio);
    model_.AddCustomField(u"Intro", u"6");
    EXPECT_NE(saved().text().find(test::kStampName), std::string::npos) << "another frame";
    open(Tag(two).field("z", "1").bytes() + kAudio);
    model_.AddCustomField(u"Intro", u"6");
    EXPECT_NE(saved().text().find(test::kStampName), std::string::npos) << "a third field";
}

TEST_F(Saving, TagSavedTwiceHoldsOneStampInItsPlace) {
    const Tag tag = Tag().field("a", "1").field(test::kStampName, "somebody").field("b", "2");
    open(Tag(tag).padded_to(600) + kAudio);
    const Bytes expected = Tag()
                               .field("a", "1")
                               .field(test::kStampName, test::kSavedStamp)
                               .field("b", "2")
                               .padded_to(600)
                               .bytes() +
                           kAudio + blank_record();
    EXPECT_EQ(saved(), expected);
    EXPECT_EQ(saved(), expected);
}

TEST_F(Saving, CustomValues1And2And4With3EmptyAreWrittenAsTwo) {
    open(kAudio);
    model_.AddTag(u"TXXX", u"TAGGED BY\0x"s);
    model_.AddTag(u"TXXX", u"b\0 2"s);
    model_.AddTag(u"TXXX", u"");
    model_.AddTag(u"TXXX", u"d\0 4"s);
    EXPECT_EQ(saved(),
              stamped(Tag()).field("b", " 2").padded_to(2048).bytes() + kAudio + blank_record());
}

TEST_F(Saving, FramesOfTheStoreStayAndCanBeSavedAgain) {
    open(kAudio);
    model_.Title(u"Song");
    saved();
    EXPECT_EQ(model_.Title(), u"Song");
    EXPECT_EQ(model_.Tag(u"TIT2", 1), u"Song");
    EXPECT_FALSE(model_.HasID3v2Tag());  // as of the opening
}

// --- the record at the end ---

TEST_F(Saving, ExistingRecordIsOverwrittenInPlace) {
    open(kAudio + Id3v1{.title = "Old", .artist = "Duo", .track = 7, .genre = 9}.bytes());
    model_.Titlev1Tag(u"New");
    const Bytes record = Id3v1{.artist = "Duo", .track = 7, .genre = 9}.bytes();
    const Bytes title = Bytes("New" + std::string(27, ' '));
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + kAudio +
                           test::overwritten(record, 3, title));
}

TEST_F(Saving, RecordThatCannotBeWrittenKeepsTheTagFromBeingWritten) {
    open(Tag().padded_to(600) + kAudio);
    model_.Title(u"Song");
    world_.files.fail({.call = FileCall::Write, .error = Error(RuntimeError::DiskFull)});
    const Error error = error_of_saving();
    EXPECT_EQ(error.number(), 61);
    EXPECT_EQ(error.description(), u"Disk full");
    EXPECT_EQ(content(), Tag().padded_to(600) + kAudio);
}

// --- tags with a wrong size, or in a wrong place ---

TEST_F(Saving, TagThatClaimsSomeBytesOfTheAudioGivesThemBack) {
    open(Tag().text("TALB", "Disc").padding(400).size(500).bytes() + kAudio);
    // There are 10 + 15 + 400 bytes, 510 are claimed.
    EXPECT_EQ(saved(),
              stamped(Tag().text("TALB", "Disc")).padded_to(425).bytes() + kAudio + blank_record());
}

TEST_F(Saving, TagThatClaimsSomeBytesOfTheAudioGivesThemBackWhenItGrows) {
    open(Tag().padding(30).size(50).bytes() + kAudio);
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + kAudio + blank_record());
}

TEST_F(Saving, TagThatClaimsMoreThanTheFileHoldsEndsAtTheFirstFrame) {
    open(Tag().padding(390).size(2'000'000).bytes() + kAudio);
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(400).bytes() + kAudio + blank_record());
}

TEST_F(Saving, TagThatClaimsMoreThanAFileWithoutAudioHoldsIsRebuiltFromTheEndOfItsHeader) {
    open(Tag().padding(390).size(2'000'000).bytes() + junk(6000));
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + test::zeros(390) + junk(6000) +
                           blank_record());
}

TEST_F(Saving, TagAfterOtherBytesIsWrittenInItsPlace) {
    open(junk(33) + Tag().padded_to(600).bytes() + kAudio);
    EXPECT_EQ(saved(), junk(33) + stamped(Tag()).padded_to(600).bytes() + kAudio + blank_record());
}

TEST_F(Saving, TagAfterOtherBytesIsRebuiltWithoutThem) {
    open(junk(33) + Tag().padded_to(60).bytes() + kAudio);
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + kAudio + blank_record());
}

TEST_F(Saving, TagAfterOtherBytesAndWithoutAudioKeepsEveryByteWhenItGrows) {
    const Bytes old = junk(33) + Tag().padded_to(60).bytes() + junk(6000);
    open(old);
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + old + blank_record());
}

TEST_F(Saving, TagWithoutAudioIsWrittenIntoWhatItClaims) {
    open(Tag().padded_to(600) + junk(6000));
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(600).bytes() + junk(6000) + blank_record());
}

TEST_F(Saving, TagWithoutAudioIsRebuiltFromWhereItEnds) {
    open(Tag().padded_to(60) + junk(6000));
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + junk(6000) + blank_record());
}

TEST_F(Saving, TagInsideTheAudioIsAudio) {
    const Frame mpeg2{.version = 2, .kbps = 64, .frequency = 22050};  // no FF FB ends the search
    Bytes audio = test::stream(mpeg2, 120);
    const Bytes inside = Tag().padding(90).bytes();
    std::copy(inside.begin(), inside.end(), audio.begin() + 208 + 50);
    open(audio);
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + audio + blank_record());
}

// --- streams that are accepted later than audio begins ---

TEST_F(Saving, FramesInFrontOfAChangeOfModeStay) {
    const Bytes audio =
        test::stream(kFrame, 5) + test::stream(kFrame.with_mode(Mode::JointStereo), 120);
    for (const bool grows : {false, true}) {
        open(Tag().padded_to(grows ? 60 : 600) + audio);
        EXPECT_EQ(saved(),
                  stamped(Tag()).padded_to(grows ? 2048 : 600).bytes() + audio + blank_record());
    }
}

TEST_F(Saving, FileOfExactly100FramesKeepsItsFirst) {
    const Bytes audio = test::stream(kFrame, 100);
    for (const bool grows : {false, true}) {
        open(Tag().padded_to(grows ? 60 : 600) + audio);
        EXPECT_EQ(saved(),
                  stamped(Tag()).padded_to(grows ? 2048 : 600).bytes() + audio + blank_record());
    }
    open(audio);
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + audio + blank_record());
}

TEST_F(Saving, FewFramesThatAreNoStreamForTheAnalyserStay) {
    const Bytes audio = test::stream(kFrame, 10);
    for (const std::size_t claimed : {600U, 610U, 590U}) {
        open(Tag().padding(590).size(static_cast<std::uint32_t>(claimed - 10)).bytes() + audio);
        EXPECT_EQ(model_.Duration(), -1);
        EXPECT_EQ(saved(), stamped(Tag()).padded_to(600).bytes() + audio + blank_record());
    }
}

TEST_F(Saving, SingleFrameRightAfterTheTagStays) {
    const Bytes audio = kFrame.bytes() + junk(20) + kAudio;
    for (const bool grows : {false, true}) {
        open(Tag().padded_to(grows ? 60 : 600) + audio);
        EXPECT_EQ(saved(),
                  stamped(Tag()).padded_to(grows ? 2048 : 600).bytes() + audio + blank_record());
    }
}

TEST_F(Saving, StreamInTheSecondHalfOfAFileIsCutAtItsOwnStart) {
    // Small frames of two rates: the walk of all frames starts at 0, and hosts read that.
    std::vector<int> rates;
    for (int i = 0; i < 40; ++i) {
        rates.push_back(i % 2 == 0 ? 32 : 40);
    }
    const Bytes audio = test::variable_stream(kFrame, rates);
    ASSERT_LT(audio.size(), 8192U);
    open(Tag().padded_to(8192) + audio);
    ASSERT_TRUE(model_.IsVBR());
    ASSERT_EQ(model_.analyser().HeaderStartPos(), 0);
    model_.Title(u"Song");
    EXPECT_EQ(saved(),
              stamped(Tag().text("TIT2", "Song")).padded_to(8192).bytes() + audio + blank_record());
}

// --- the same object again ---

TEST_F(Saving, SecondSaveOfOneObjectIsInPlace) {
    open(kAudio);
    const Bytes first = saved();
    world_.files.reset_counts();
    EXPECT_EQ(saved(), first);
    EXPECT_EQ(world_.files.calls(FileCall::Replace), 0U);
    EXPECT_EQ(world_.files.bytes_written(), 2048U + 125U);
}

TEST_F(Saving, StreamReadsAsOfTheOpeningAfterASave) {
    open(junk(100) + kAudio);
    saved();
    EXPECT_EQ(model_.analyser().HeaderStartPos(), 100);
    // 100 + 120 * 417 bytes less the first frame's offset, 8 bits each at 128 kbit/s: 3127.5 ms.
    EXPECT_EQ(model_.Duration(), 3128);
}

TEST_F(Saving, ThirdSaveOfOneObjectThatGrowsMovesTheAudioOnce) {
    open(kAudio);
    saved();
    model_.Title(wide(title_for(3000)));
    // The stamp, the only custom value, leaves the list and comes back after the title.
    const Bytes expected = stamped(Tag().text("TIT2", title_for(3000))).padded_to(4096).bytes() +
                           kAudio + blank_record();
    EXPECT_EQ(saved(), expected);
    EXPECT_EQ(saved(), expected);
}

TEST_F(Saving, FileChangedByAnotherProgramIsScannedAgainWithoutEvents) {
    open(Tag().padded_to(600) + kAudio);
    put(Tag().padded_to(1500) + kAudio + kAudio);
    host_.scannings = 0;
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(1500).bytes() + kAudio + kAudio + blank_record());
    EXPECT_EQ(host_.scannings, 0);
}

TEST_F(Saving, FileReplacedByOneOfTheSameLengthIsNotCutAtTheOldOffset) {
    open(Tag().padded_to(60) + kAudio);
    const Bytes other = kAudio + junk(60);
    put(other);
    EXPECT_EQ(saved(), stamped(Tag()).padded_to(2048).bytes() + other + blank_record());
}

// --- files that cannot be saved ---

TEST_F(Saving, MissingFileIsNoErrorAndNotCreatedAgain) {
    open(kAudio);
    world_.files.remove(kName);
    EXPECT_NO_THROW(model_.Update());
    EXPECT_EQ(world_.files.names(), std::vector<String>());
}

TEST_F(Saving, ObjectWithoutAFileDoesNothing) {
    EXPECT_NO_THROW(model_.Update());
    EXPECT_EQ(world_.files.calls(), 0U);
}

TEST_F(Saving, EmptyFileIsNoMp3File) {
    open(Bytes());
    const Error error = error_of_saving();
    EXPECT_EQ(error.number(), static_cast<std::int32_t>(0x80041001U));
    EXPECT_EQ(error.description(), u"song.mp3 is not a valid MP3 file.");
    EXPECT_EQ(error.source(), kReader);
    EXPECT_EQ(content(), Bytes());
}

TEST_F(Saving, FileThatMayNotBeWrittenIsRefusedByTheRecordsWriter) {
    open(Tag().padded_to(60) + kAudio);
    world_.files.make_read_only(kName);
    const Error error = error_of_saving();
    EXPECT_EQ(error.number(), 75);
    EXPECT_EQ(error.description(), u"Path/File access error");
    EXPECT_EQ(error.source(), kReader);
    EXPECT_EQ(content(), Tag().padded_to(60) + kAudio);
}

TEST_F(Saving, FolderThatMayNotBeWrittenKeepsTheOldTag) {
    const Bytes old = Tag().padded_to(60) + kAudio;
    open(old);
    world_.files.make_folders_read_only();
    const Error error = error_of_saving();
    EXPECT_EQ(error.number(), 75);
    EXPECT_EQ(error.source(), kWriter);
    EXPECT_EQ(content(), old);
}

TEST_F(Saving, FileThatIsHeldOpenCannotBeReplaced) {
    const Bytes old = Tag().padded_to(60) + kAudio;
    open(old);
    const auto held = world_.files.open(kName, OpenMode::Read);
    const Error error = error_of_saving();
    EXPECT_EQ(error.number(), 70);
    EXPECT_EQ(error.source(), kWriter);
    EXPECT_EQ(content(), old);
    EXPECT_EQ(world_.files.names(), std::vector<String>{kName});
}

TEST_F(Saving, FileThatCouldNotBeReadWholeIsNotWritten) {
    const Bytes old = Tag().text("TIT2", "Song").text("TALB", "Disc").padded_to(60'000) + kAudio;
    for (std::uint64_t nth = 1; nth <= 2; ++nth) {
        put(old);
        world_.files.fail({.nth = nth, .call = FileCall::Read});
        model_.FileName(kName);
        ASSERT_TRUE(world_.files.has_failed());
        world_.files.fail_nothing();
        const Error error = error_of_saving();
        EXPECT_EQ(error.number(), 57);
        EXPECT_EQ(error.source(), kWriter);
        EXPECT_EQ(content(), old);
    }
}

TEST_F(Saving, FileThatCouldNotBeOpenedIsNotWrittenOverOnceItCan) {
    const Bytes old = Tag().text("TIT2", "Song").padded_to(600) + kAudio;
    put(old);
    world_.files.fail({.call = FileCall::Open, .error = Error(RuntimeError::TooManyFiles)});
    EXPECT_THROW(model_.FileName(kName), Error);
    world_.files.fail_nothing();
    EXPECT_EQ(error_of_saving().number(), 67);
    EXPECT_EQ(content(), old);
}

TEST_F(Saving, LinkStaysALink) {
    world_.files.put(u"target.mp3", kAudio);
    world_.files.link(kName, u"target.mp3");
    model_.FileName(kName);
    model_.Update();
    EXPECT_EQ(world_.files.content(u"target.mp3"),
              stamped(Tag()).padded_to(2048).bytes() + kAudio + blank_record());
    EXPECT_EQ(world_.files.resolve_links(kName), u"target.mp3");
    EXPECT_EQ(world_.files.names(), std::vector<String>{u"target.mp3"});
}

TEST_F(Saving, HostMayRunAfterEvery409600BytesOfACopy) {
    struct Row {
        std::size_t frames;
        int yields;
    };
    // 982 frames of 417 bytes are 409,494 bytes, 983 are 409,911; the record counts too.
    for (const Row& row : {Row{981, 0}, Row{983, 1}, Row{1966, 2}, Row{3000, 3}}) {
        open(test::stream(kFrame, row.frames));
        host_.yields = 0;
        saved();
        EXPECT_EQ(host_.yields, row.yields) << row.frames;
    }
}

// --- version 2 ---

TEST_F(Saving, Version2KeepsArtistTitleAndYearAndTheStampOnly) {
    open(Tag(2)
             .text("TT2", "Song")
             .text("TP1", "Duo")
             .text("TAL", "Disc")
             .text("TYE", "1999")
             .comment("eng", "", "Hi")
             .padded_to(3000) +
         kAudio);
    const Tag kept = Tag().text("TPE1", "Duo").text("TIT2", "Song").text("TYER", "1999");
    EXPECT_EQ(saved(), stamped(kept).padded_to(2048).bytes() + kAudio + blank_record());
    EXPECT_EQ(model_.Title(), u"Song");
    EXPECT_EQ(model_.Album(), u"");
}

TEST_F(Saving, Version2WithoutArtistTitleAndYearWritesThemEmpty) {
    open(Tag(2).text("TAL", "Disc").padded_to(3000) + kAudio);
    const Tag kept = Tag().text("TPE1", "").text("TIT2", "").text("TYER", "");
    EXPECT_EQ(saved(), stamped(kept).padded_to(2048).bytes() + kAudio + blank_record());
}

TEST_F(Saving, Version2KeepsCategoryFieldsAndNoOtherCustomOnes) {
    open(Tag(2).text("TT2", "Song").padded_to(3000) + kAudio);
    model_.CategoryLevel(3);
    model_.CueIn(1500);
    model_.AddCustomField(u"Category", u"Jingles");
    Tag kept = Tag().text("TPE1", "").text("TIT2", "Song").text("TYER", "");
    kept = stamped(kept).field("CatLevel", "3").field("Category", "Jingles");
    EXPECT_EQ(saved(), kept.padded_to(2048).bytes() + kAudio + blank_record());
    EXPECT_EQ(model_.CueIn(), 0);
}

TEST_F(Saving, Version2DropsACategoryLevelThatIsNotAboveZero) {
    for (const std::int16_t level : {std::int16_t{0}, std::int16_t{-2}}) {
        open(Tag(2).text("TT2", "Song").padded_to(3000) + kAudio);
        model_.CategoryLevel(level);
        const Tag kept = Tag().text("TPE1", "").text("TIT2", "Song").text("TYER", "");
        EXPECT_EQ(saved(), stamped(kept).padded_to(2048).bytes() + kAudio + blank_record());
    }
}

TEST_F(Saving, Version2IsConvertedOnce) {
    open(Tag(2).text("TT2", "Song").padded_to(3000) + kAudio);
    saved();
    model_.Album(u"Disc");
    Tag kept = Tag().text("TPE1", "").text("TIT2", "Song").text("TYER", "");
    EXPECT_EQ(saved(),
              stamped(kept.text("TALB", "Disc")).padded_to(2048).bytes() + kAudio + blank_record());
}

TEST_F(Saving, Version2IsConvertedInOneStep) {
    open(Tag(2).text("TT2", "Song").padded_to(3000) + kAudio);
    saved();
    EXPECT_EQ(world_.files.calls(FileCall::Replace), 1U);
}

TEST_F(Saving, Version2LeavesTheModelOfAFileWithoutItsTag) {
    open(Tag(2).text("TT2", "Song").text("TAL", "Disc").padded_to(3000) + kAudio);
    model_.Genre(17);
    model_.Lyrics(u"la");
    ASSERT_EQ(model_.analyser().HeaderStartPos(), 3000);
    saved();
    EXPECT_FALSE(model_.HasID3v2Tag());
    EXPECT_EQ(model_.TagVersion(), 0);
    EXPECT_EQ(model_.TotalId3v2TagLen(), 0);
    EXPECT_TRUE(model_.HasID3v1Tag());
    EXPECT_EQ(model_.analyser().HeaderStartPos(), 0);
    EXPECT_EQ(model_.FrameCount(), 4);
    // Nothing but these two outlives the reading of the file.
    EXPECT_EQ(model_.Genre(), 17);
    EXPECT_EQ(model_.Lyrics(), u"la");
    EXPECT_EQ(model_.Album(), u"");
}

// Another program has made the file longer since, so the audio is searched for again.
TEST_F(Saving, AudioThatCannotBeLookedForAgainIsAnErrorBeforeAnythingIsWritten) {
    open(Tag().padded_to(600).bytes() + kAudio);
    const Bytes longer = Tag().padded_to(900).bytes() + kAudio + kAudio;
    put(longer);
    model_.Title(u"Song");
    world_.files.fail({.nth = 1, .call = FileCall::Read});
    const Error error = error_of_saving();
    EXPECT_EQ(error.number(), 57);
    EXPECT_EQ(error.source(), kWriter);
    EXPECT_EQ(content(), longer);
    world_.files.fail_nothing();
    EXPECT_EQ(saved(), stamped(Tag().text("TIT2", "Song")).padded_to(900).bytes() + kAudio +
                           kAudio + blank_record());
}

TEST_F(Saving, Version2ThatClaimsMoreThanAFileWithoutAudioHoldsIsNotWritten) {
    const Bytes old = Tag(2).padding(590).size(2'000'000).bytes() + junk(6000);
    open(old);
    EXPECT_EQ(error_of_saving().source(), kWriter);
    EXPECT_EQ(content(), old);
}

TEST_F(Saving, Version2AfterOtherBytesIsConvertedWithAllTheAudio) {
    const Bytes audio =
        test::stream(kFrame, 5) + test::stream(kFrame.with_mode(Mode::JointStereo), 120);
    open(junk(20) + Tag(2).text("TT2", "Song").padded_to(3000).bytes() + audio);
    const Tag kept = Tag().text("TPE1", "").text("TIT2", "Song").text("TYER", "");
    EXPECT_EQ(saved(), stamped(kept).padded_to(2048).bytes() + audio + blank_record());
}

TEST_F(Saving, Version2WithoutAudioLosesItsOwnAreaOnly) {
    open(junk(20) + Tag(2).text("TT2", "Song").padded_to(3000).bytes() + junk(6000));
    const Tag kept = Tag().text("TPE1", "").text("TIT2", "Song").text("TYER", "");
    EXPECT_EQ(saved(), stamped(kept).padded_to(2048).bytes() + junk(6020) + blank_record());
}

}  // namespace
}  // namespace brindle
