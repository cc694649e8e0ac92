#include "id3v1/cMP3ID3v1.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <brindle/error.h>

#include "support/bytes.h"
#include "support/frames.h"
#include "support/id3v1.h"
#include "support/memory_environment.h"
#include "support/raised_error.h"

namespace brindle {
namespace {

using test::Bytes;
using test::Fault;
using test::FileCall;
using test::Id3v1;
using test::LoggedCall;
using test::required_error;

const String kName = u"song.mp3";
const String kSource = u"BrindleId3v1Tagger";
const Bytes kAudio = test::stream({}, 3);  // 3 frames of 417 bytes

class TheRecord : public ::testing::Test {
protected:
    void open(const Bytes& content) {
        world_.files.put(kName, content);
        record_.MP3File(kName);
    }
    [[nodiscard]] const Bytes& content() const { return world_.files.content(kName); }

    test::MemoryEnvironment world_;
    cMP3ID3v1 record_{world_.environment};
};

using ReadingTheRecord = TheRecord;
using WritingTheRecord = TheRecord;
using StrippingTheRecord = TheRecord;

// --- reading ---

TEST_F(ReadingTheRecord, ObjectWithoutAFileHasNoTagNoTextsNoTrackAndGenre255) {
    EXPECT_EQ(record_.MP3File(), u"");
    EXPECT_FALSE(record_.HasID3v1Tag());
    EXPECT_EQ(
        record_.Title() + record_.Artist() + record_.Album() + record_.Year() + record_.Comment(),
        u"");
    EXPECT_EQ(record_.Track(), 0);
    EXPECT_EQ(record_.Genre(), 255);
}

TEST_F(ReadingTheRecord, EachFieldIsHandedOut) {
    open(kAudio + Id3v1{.title = "Morning",
                        .artist = "The Presenters",
                        .album = "Jingles",
                        .year = "1999",
                        .comment = "dry",
                        .track = 12,
                        .genre = 101}
                      .bytes());
    EXPECT_EQ(record_.MP3File(), kName);
    EXPECT_TRUE(record_.HasID3v1Tag());
    EXPECT_EQ(record_.Title(), u"Morning");
    EXPECT_EQ(record_.Artist(), u"The Presenters");
    EXPECT_EQ(record_.Album(), u"Jingles");
    EXPECT_EQ(record_.Year(), u"1999");
    EXPECT_EQ(record_.Comment(), u"dry");
    EXPECT_EQ(record_.Track(), 12);
    EXPECT_EQ(record_.Genre(), 101);
    EXPECT_EQ(record_.GenreName(record_.Genre()), u"Speech");
}

TEST_F(ReadingTheRecord, FileOf128BytesIsNotExamined) {
    open(Id3v1{.title = "Song", .track = 3, .genre = 17}.bytes());
    EXPECT_FALSE(record_.HasID3v1Tag());
    EXPECT_EQ(record_.Title(), u"");
    EXPECT_EQ(record_.Track(), 0);
    EXPECT_EQ(record_.Genre(), 255);
}

TEST_F(ReadingTheRecord, FileOf129BytesIsExamined) {
    open(Bytes("x") + Id3v1{.title = "Song"}.bytes());
    EXPECT_TRUE(record_.HasID3v1Tag());
    EXPECT_EQ(record_.Title(), u"Song");
}

TEST_F(ReadingTheRecord, EmptyFileHasNoTag) {
    open({});
    EXPECT_FALSE(record_.HasID3v1Tag());
}

TEST_F(ReadingTheRecord, LowerAndMixedCaseIdentifiersAreNotSeen) {
    for (const std::string identifier : {"tag", "Tag", "TAg"}) {
        open(kAudio + Id3v1{.title = "Song", .identifier = identifier}.bytes());
        EXPECT_FALSE(record_.HasID3v1Tag()) << identifier;
        EXPECT_EQ(record_.Title(), u"") << identifier;
        EXPECT_EQ(record_.Genre(), 255) << identifier;
    }
}

TEST_F(ReadingTheRecord, SpacesAfterATextStayWhenNulsFollowThem) {
    // The spaces are not at the end while spaces are taken off; NULs go only afterwards.
    open(kAudio + Id3v1{.title = "Hello  "}.bytes());
    EXPECT_EQ(record_.Title(), u"Hello  ");
}

TEST_F(ReadingTheRecord, SpacesAtBothEndsGo) {
    open(kAudio + Id3v1{.title = "  Hello you", .filler = ' '}.bytes());
    EXPECT_EQ(record_.Title(), u"Hello you");
}

TEST_F(ReadingTheRecord, NulsInsideATextGoAndWhatFollowsStays) {
    open(kAudio + Id3v1{.artist = std::string("A\0B", 3)}.bytes());
    EXPECT_EQ(record_.Artist(), u"AB");
}

TEST_F(ReadingTheRecord, TextIsOfTheCodePage) {
    open(kAudio + Id3v1{.title = "Caf\xE9 \x80"}.bytes());
    EXPECT_EQ(record_.Title(), u"Caf\u00E9 \u20AC");
}

TEST_F(ReadingTheRecord, CommentOf30CharactersLosesIts29thAndIts30thIsTheTrack) {
    // 28 letters, then "y" where the zero should be and "z" (122) where the track is.
    open(kAudio + Id3v1{.comment = std::string(28, 'x'), .track = 'z', .byte_125 = 'y'}.bytes());
    EXPECT_EQ(record_.Comment(), String(28, u'x'));
    EXPECT_EQ(record_.Track(), 122);
}

TEST_F(ReadingTheRecord, AnotherFileReplacesWhatWasReadAndWhatWasSet) {
    open(kAudio + Id3v1{.title = "First", .track = 1, .genre = 2}.bytes());
    record_.Artist(u"Set by the host");
    world_.files.put(u"other.mp3", kAudio);
    record_.MP3File(u"other.mp3");
    EXPECT_EQ(record_.MP3File(), u"other.mp3");
    EXPECT_FALSE(record_.HasID3v1Tag());
    EXPECT_EQ(record_.Title(), u"");
    EXPECT_EQ(record_.Artist(), u"");
    EXPECT_EQ(record_.Track(), 0);
    EXPECT_EQ(record_.Genre(), 255);
}

TEST_F(ReadingTheRecord, MissingFileRaises53FromTheTaggerAndLeavesResetFields) {
    open(kAudio + Id3v1{.title = "Song", .genre = 2}.bytes());
    const Error error = required_error([&] { record_.MP3File(u"missing.mp3"); });
    EXPECT_EQ(error.number(), 53);
    EXPECT_EQ(error.description(), Error(RuntimeError::FileNotFound).description());
    EXPECT_EQ(error.source(), kSource);
    EXPECT_EQ(record_.MP3File(), u"missing.mp3");
    EXPECT_FALSE(record_.HasID3v1Tag());
    EXPECT_EQ(record_.Title(), u"");
    EXPECT_EQ(record_.Genre(), 255);
}

TEST_F(ReadingTheRecord, OpenFailureKeepsItsNumberAndDescription) {
    world_.files.put(kName, kAudio);
    world_.files.fail({.call = FileCall::Open, .error = Error(70, u"Somebody else has it")});
    const Error error = required_error([&] { record_.MP3File(kName); });
    EXPECT_EQ(error.number(), 70);
    EXPECT_EQ(error.description(), u"Somebody else has it");
    EXPECT_EQ(error.source(), kSource);
}

TEST_F(ReadingTheRecord, ReadFailureIsRaisedAndLeavesResetFields) {
    world_.files.put(kName, kAudio + Id3v1{.title = "Song"}.bytes());
    world_.files.fail({.call = FileCall::Read});
    EXPECT_EQ(required_error([&] { record_.MP3File(kName); }).number(), 57);
    EXPECT_FALSE(record_.HasID3v1Tag());
    EXPECT_EQ(record_.Title(), u"");
}

TEST_F(ReadingTheRecord, FileThatBecameShorterMeanwhileHasNoTag) {
    world_.files.put(kName, kAudio + Id3v1{.title = "Song"}.bytes());
    world_.files.fail({.call = FileCall::Read, .from_then_on = true, .kind = Fault::Kind::Shorten});
    record_.MP3File(kName);
    EXPECT_FALSE(record_.HasID3v1Tag());
}

TEST_F(ReadingTheRecord, CostsOneOpenOneLengthAndOneReadOf128Bytes) {
    world_.files.put(kName, test::stream({}, 1000) + Id3v1{.title = "Song"}.bytes());
    world_.files.reset_counts();
    record_.MP3File(kName);
    EXPECT_EQ(record_.Title(), u"Song");
    EXPECT_EQ(world_.files.calls(FileCall::Open), 1U);
    EXPECT_EQ(world_.files.calls(FileCall::Length), 1U);
    EXPECT_EQ(world_.files.calls(FileCall::Read), 1U);
    EXPECT_EQ(world_.files.bytes_read(), 128U);
    EXPECT_EQ(world_.files.open_files(), 0U);
}

TEST_F(ReadingTheRecord, WindowOfAnOpenedFileServesAndDoesNotMove) {
    world_.files.put(kName, test::stream({}, 1000) + Id3v1{.title = "Song"}.bytes());
    const auto file = world_.files.open(kName, OpenMode::Read);
    FileWindow window(*file);
    const auto head = window.view(0, 4);
    const auto refills = window.refills();
    world_.files.reset_counts();
    record_.read(kName, window);
    EXPECT_EQ(record_.MP3File(), kName);
    EXPECT_EQ(record_.Title(), u"Song");
    EXPECT_EQ(world_.files.calls(), 1U);
    EXPECT_EQ(world_.files.bytes_read(), 128U);
    EXPECT_EQ(window.refills(), refills);
    EXPECT_EQ(window.view(0, 4).data(), head.data());
}

TEST_F(ReadingTheRecord, ValuesOfTheHostAreHandedOutCleanedAndUncut) {
    record_.Title(String(u"  A") + u'\0' + String(40, u'b') + u" ");
    EXPECT_EQ(record_.Title(), u"A" + String(40, u'b'));
    record_.Year(u"12345");
    EXPECT_EQ(record_.Year(), u"12345");
    record_.Album(u"\u4E2D");  // outside the code page: lost only when written
    EXPECT_EQ(record_.Album(), u"\u4E2D");
}

TEST_F(ReadingTheRecord, EveryGenreAndTrackByteIsHandedOutAsItWasSet) {
    for (int value = 0; value <= 255; ++value) {
        record_.Genre(static_cast<std::uint8_t>(value));
        record_.Track(static_cast<std::uint8_t>(255 - value));
        EXPECT_EQ(record_.Genre(), value);
        EXPECT_EQ(record_.Track(), 255 - value);
    }
}

// --- writing ---

TEST_F(WritingTheRecord, FileWithoutARecordGrowsByExactly128Bytes) {
    open(kAudio);
    record_.Title(u"Abc");
    record_.Artist(u"Def");
    record_.Album(u"Ghi");
    record_.Year(u"2001");
    record_.Comment(u"Jkl");
    record_.Track(5);
    record_.Genre(17);
    record_.Update();
    const Id3v1 expected{.title = "Abc",
                         .artist = "Def",
                         .album = "Ghi",
                         .year = "2001",
                         .comment = "Jkl",
                         .track = 5,
                         .genre = 17,
                         .filler = ' '};
    EXPECT_EQ(content(), kAudio + expected.bytes());
    EXPECT_EQ(content().size(), kAudio.size() + 128);
}

TEST_F(WritingTheRecord, EmptyRecordIsSpacesTrack0AndGenre255) {
    open(kAudio);
    record_.Update();
    EXPECT_EQ(content(), kAudio + Id3v1{.filler = ' '}.bytes());
}

TEST_F(WritingTheRecord, ExistingRecordIsOverwrittenInPlace) {
    open(kAudio + Id3v1{.title = "Old", .artist = "Old", .track = 1, .genre = 2}.bytes());
    record_.Title(u"New");
    record_.Genre(3);
    record_.Update();
    Bytes expected = kAudio + Id3v1{.artist = "Old", .track = 1, .genre = 3}.bytes();
    const std::string title = "New" + std::string(27, ' ');
    std::copy(title.begin(), title.end(),
              expected.begin() + static_cast<std::ptrdiff_t>(kAudio.size() + 3));
    EXPECT_EQ(content(), expected);
}

TEST_F(WritingTheRecord, FieldsThatWereNotSetKeepTheirBytesAndTheZeroIsRestored) {
    const Id3v1 read{.title = "Hello  ", .comment = "  kept  ", .track = 'z', .byte_125 = 'y'};
    open(kAudio + read.bytes());
    record_.Update();
    Id3v1 written = read;
    written.byte_125 = 0;
    EXPECT_EQ(content(), kAudio + written.bytes());
}

TEST_F(WritingTheRecord, TitleOf35CharactersIsWrittenAsItsFirst30) {
    open(kAudio);
    record_.Title(u"abcdefghijklmnopqrstuvwxyz123456789");
    record_.Update();
    EXPECT_EQ(content().part(kAudio.size() + 3, 31), Bytes("abcdefghijklmnopqrstuvwxyz1234 "));
    EXPECT_EQ(record_.Title(), u"abcdefghijklmnopqrstuvwxyz123456789");
}

TEST_F(WritingTheRecord, TitleOf3CharactersIsFollowedBy27Spaces) {
    open(kAudio);
    record_.Title(u"abc");
    record_.Artist(u"D");
    record_.Update();
    EXPECT_EQ(content().part(kAudio.size() + 3, 31), Bytes("abc                           D"));
}

TEST_F(WritingTheRecord, EachWidthIsItsOwn) {
    open(kAudio);
    record_.Artist(String(99, u'a'));
    record_.Album(String(99, u'l'));
    record_.Year(String(99, u'1'));
    record_.Comment(String(99, u'c'));
    record_.Update();
    EXPECT_EQ(content().last(128), Bytes("TAG") + test::repeated(30, ' ') +
                                       test::repeated(30, 'a') + test::repeated(30, 'l') +
                                       test::repeated(4, '1') + test::repeated(28, 'c') +
                                       Bytes({0, 0, 255}));
}

TEST_F(WritingTheRecord, SpacesThatTheHostSetAreWritten) {
    open(kAudio);
    record_.Title(u" abc");
    record_.Update();
    EXPECT_EQ(content().part(kAudio.size() + 3, 5), Bytes(" abc "));
}

TEST_F(WritingTheRecord, CharactersOutsideTheCodePageBecomeQuestionMarksInTheFileOnly) {
    open(kAudio);
    record_.Title(u"\u00E9\u4E2D\u20AC");
    record_.Update();
    EXPECT_EQ(content().part(kAudio.size() + 3, 4), Bytes("\xE9?\x80 "));
    EXPECT_EQ(record_.Title(), u"\u00E9\u4E2D\u20AC");
}

TEST_F(WritingTheRecord, LowerCaseRecordStaysAndANewOneIsAppended) {
    const Bytes old = kAudio + Id3v1{.title = "Song", .identifier = "tag"}.bytes();
    open(old);
    record_.Update();
    EXPECT_EQ(content(), old + Id3v1{.filler = ' '}.bytes());
}

TEST_F(WritingTheRecord, TagFlagStaysUntilTheFileIsReadAgain) {
    open(kAudio);
    record_.Title(u"Abc");
    record_.Update();
    EXPECT_FALSE(record_.HasID3v1Tag());
    EXPECT_EQ(record_.Title(), u"Abc");
    record_.MP3File(kName);
    EXPECT_TRUE(record_.HasID3v1Tag());
    EXPECT_EQ(record_.Title(), u"Abc");
}

TEST_F(WritingTheRecord, SecondUpdateAppendsNothing) {
    open(kAudio);
    record_.Update();
    const Bytes once = content();
    record_.Update();
    EXPECT_EQ(content(), once);
}

TEST_F(WritingTheRecord, FilesOfUpTo128BytesAreLeftAlone) {
    const Bytes record = Id3v1{.title = "Song"}.bytes();
    for (const Bytes& small : {record, record.first(127), Bytes("x"), test::zeros(128)}) {
        open(small);
        record_.Title(u"New");
        record_.Update();
        EXPECT_EQ(content(), small);
    }
}

TEST_F(WritingTheRecord, EmptyFileRaisesThatItIsNoMp3FileAndStaysEmpty) {
    open({});
    const Error error = required_error([&] { record_.Update(); });
    EXPECT_EQ(error.number(), -2147217407);
    EXPECT_EQ(error.description(), u"song.mp3 is not a valid MP3 file.");
    EXPECT_EQ(error.source(), kSource);
    EXPECT_EQ(content(), Bytes());
    EXPECT_EQ(world_.files.open_files(), 0U);
}

TEST_F(WritingTheRecord, MissingFileIsCreatedEmptyAndRaisesTheSame) {
    open(kAudio);
    world_.files.remove(kName);
    EXPECT_EQ(required_error([&] { record_.Update(); }).number(), -2147217407);
    EXPECT_EQ(content(), Bytes());
}

TEST_F(WritingTheRecord, OneWriteOf125BytesAfterAnExistingIdentifier) {
    open(kAudio + Id3v1{.title = "Old"}.bytes());
    world_.files.reset_counts();
    record_.Update();
    const std::vector<LoggedCall> expected{{FileCall::Open, kName},  {FileCall::State, kName},
                                           {FileCall::Read, kName},  {FileCall::State, kName},
                                           {FileCall::Write, kName}, {FileCall::FlushData, kName},
                                           {FileCall::Close, kName}};
    EXPECT_EQ(world_.files.log(), expected);
    EXPECT_EQ(world_.files.bytes_read(), 128U);
    EXPECT_EQ(world_.files.bytes_written(), 125U);
}

TEST_F(WritingTheRecord, OneWriteOf128BytesAtTheEnd) {
    open(kAudio);
    world_.files.reset_counts();
    record_.Update();
    EXPECT_EQ(world_.files.calls(FileCall::Write), 1U);
    EXPECT_EQ(world_.files.bytes_written(), 128U);
}

TEST_F(WritingTheRecord, EachFailingCallIsRaisedFromTheTaggerAndTheAudioStays) {
    for (const bool from_then_on : {false, true}) {
        for (const Bytes& old : {kAudio, kAudio + Id3v1{.title = "Old"}.bytes()}) {
            open(old);
            record_.Title(u"New");
            world_.files.reset_counts();
            record_.Update();
            const std::uint64_t calls = world_.files.calls();
            const Bytes written = content();
            ASSERT_EQ(calls, 7U);
            for (std::uint64_t nth = 1; nth <= calls; ++nth) {
                world_.files.put(kName, old);
                world_.files.fail({.nth = nth,
                                   .from_then_on = from_then_on,
                                   .error = Error(RuntimeError::DiskFull)});
                const Error error = required_error([&] { record_.Update(); });
                world_.files.fail_nothing();
                // After the write only the flush and the close can fail.
                const bool is_written = nth > 5;
                EXPECT_EQ(error.number(), is_written ? 57 : 61) << "call " << nth;
                EXPECT_EQ(error.source(), kSource) << "call " << nth;
                EXPECT_EQ(world_.files.open_files(), 0U) << "call " << nth;
                EXPECT_EQ(content().first(kAudio.size()), kAudio) << "call " << nth;
                EXPECT_EQ(content(), is_written ? written : old) << "call " << nth;
            }
        }
    }
}

TEST_F(WritingTheRecord, DiskThatIsFullAmidAnAppendedRecordLeavesTheOldFile) {
    open(kAudio);
    world_.files.fail(
        {.call = FileCall::Write, .error = Error(RuntimeError::DiskFull), .bytes_before = 50});
    EXPECT_EQ(required_error([&] { record_.Update(); }).number(), 61);
    EXPECT_EQ(content(), kAudio);
}

TEST_F(WritingTheRecord, ErrorOfAnAppendIsRaisedAlsoWhenItCannotBeUndone) {
    open(kAudio);
    const Error full(RuntimeError::DiskFull);
    // What comes before the write works.
    world_.files.fail({.nth = 5, .from_then_on = true, .error = full, .bytes_before = 50});
    const Error error = required_error([&] { record_.Update(); });
    EXPECT_EQ(error.number(), 61);
    EXPECT_NE(error.description().find(u"could not be restored"), String::npos);
    EXPECT_EQ(content().first(kAudio.size()), kAudio);
}

TEST_F(WritingTheRecord, FileThatBecameShorterMeanwhileIsNotWritten) {
    open(kAudio);
    world_.files.fail({.call = FileCall::Read, .kind = Fault::Kind::Shorten});
    EXPECT_EQ(required_error([&] { record_.Update(); }).number(), 62);
    EXPECT_EQ(content(), kAudio);
}

TEST_F(WritingTheRecord, ReadOnlyFileRaises75FromTheTagger) {
    open(kAudio);
    world_.files.make_read_only(kName);
    const Error error = required_error([&] { record_.Update(); });
    EXPECT_EQ(error.number(), 75);
    EXPECT_EQ(error.source(), kSource);
    EXPECT_EQ(content(), kAudio);
}

RC_GTEST_PROP(WritingAnyRecord, IsReadBackAndKeepsTheAudio,
              (const std::vector<std::uint8_t>& title, std::uint8_t track, std::uint8_t genre)) {
    test::MemoryEnvironment world;
    world.files.put(kName, kAudio);
    cMP3ID3v1 writer(world.environment);
    writer.MP3File(kName);
    String text;
    for (const std::uint8_t byte : title) {
        // Printable ASCII without the space, which is no part of a text at its ends.
        text += static_cast<char16_t>(u'!' + byte % 94);
    }
    writer.Title(text);
    writer.Track(track);
    writer.Genre(genre);
    writer.Update();

    cMP3ID3v1 reader(world.environment);
    reader.MP3File(kName);
    RC_ASSERT(reader.HasID3v1Tag());
    RC_ASSERT(reader.Title() == text.substr(0, 30));
    RC_ASSERT(reader.Track() == track);
    RC_ASSERT(reader.Genre() == genre);
    RC_ASSERT(world.files.content(kName).first(kAudio.size()) == kAudio);
    RC_ASSERT(world.files.content(kName).size() == kAudio.size() + 128);
}

// --- stripping ---

TEST_F(StrippingTheRecord, RecordIsRemovedAndTheFieldsAreReadAgain) {
    open(kAudio + Id3v1{.title = "Song", .track = 3, .genre = 4}.bytes());
    record_.Artist(u"Set by the host");
    EXPECT_TRUE(record_.Stripv1Tag());
    EXPECT_EQ(content(), kAudio);
    EXPECT_FALSE(record_.HasID3v1Tag());
    EXPECT_EQ(record_.Title(), u"");
    EXPECT_EQ(record_.Artist(), u"");
    EXPECT_EQ(record_.Track(), 0);
    EXPECT_EQ(record_.Genre(), 255);
    EXPECT_EQ(world_.files.names(), std::vector<String>{kName});
    EXPECT_EQ(world_.files.open_files(), 0U);
}

TEST_F(StrippingTheRecord, LowerCaseRecordIsRemovedThoughNoReaderSeesIt) {
    open(kAudio + Id3v1{.title = "Song", .identifier = "tag"}.bytes());
    EXPECT_FALSE(record_.HasID3v1Tag());
    EXPECT_TRUE(record_.Stripv1Tag());
    EXPECT_EQ(content(), kAudio);
}

TEST_F(StrippingTheRecord, MixedCaseIsNoRecord) {
    for (const std::string identifier : {"Tag", "TAg", "tAG", "taG"}) {
        const Bytes old = kAudio + Id3v1{.title = "Song", .identifier = identifier}.bytes();
        open(old);
        EXPECT_TRUE(record_.Stripv1Tag()) << identifier;
        EXPECT_EQ(content(), old) << identifier;
    }
}

TEST_F(StrippingTheRecord, FileWithoutARecordIsTrueAndUntouched) {
    open(kAudio);
    record_.Title(u"Set by the host");
    world_.files.reset_counts();
    EXPECT_TRUE(record_.Stripv1Tag());
    EXPECT_EQ(content(), kAudio);
    EXPECT_EQ(world_.files.bytes_written(), 0U);
    EXPECT_EQ(world_.files.calls(FileCall::Create), 0U);
    EXPECT_EQ(record_.Title(), u"Set by the host");
    EXPECT_EQ(world_.files.open_files(), 0U);
}

TEST_F(StrippingTheRecord, OnlyTheLastOfTwoRecordsIsRemoved) {
    const Bytes once = kAudio + Id3v1{.title = "Inner"}.bytes();
    open(once + Id3v1{.title = "Outer"}.bytes());
    EXPECT_TRUE(record_.Stripv1Tag());
    EXPECT_EQ(content(), once);
    EXPECT_TRUE(record_.HasID3v1Tag());
    EXPECT_EQ(record_.Title(), u"Inner");
}

TEST_F(StrippingTheRecord, MissingFileIsFalse) {
    open(kAudio);
    world_.files.remove(kName);
    EXPECT_FALSE(record_.Stripv1Tag());
    EXPECT_FALSE(world_.files.has(kName));
}

TEST_F(StrippingTheRecord, ObjectWithoutAFileIsFalse) {
    EXPECT_FALSE(record_.Stripv1Tag());
}

TEST_F(StrippingTheRecord, FileShorterThanARecordIsFalseAndUntouched) {
    const Bytes cut = Id3v1{.title = "Song"}.bytes().first(127);
    open(cut);
    EXPECT_FALSE(record_.Stripv1Tag());
    EXPECT_EQ(content(), cut);
}

TEST_F(StrippingTheRecord, FileThatIsARecordOnlyBecomesEmpty) {
    open(Id3v1{.title = "Song"}.bytes());
    EXPECT_TRUE(record_.Stripv1Tag());
    EXPECT_EQ(content(), Bytes());
}

TEST_F(StrippingTheRecord, ReadOnlyFileIsFalseAndNothingIsCreated) {
    const Bytes old = kAudio + Id3v1{.title = "Song"}.bytes();
    open(old);
    world_.files.make_read_only(kName);
    EXPECT_FALSE(record_.Stripv1Tag());
    EXPECT_EQ(content(), old);
    EXPECT_EQ(world_.files.calls(FileCall::Create), 0U);
}

TEST_F(StrippingTheRecord, LargeFileMovesInPiecesOf256To400KiB) {
    const Bytes audio = test::repeated(3 * 1024 * 1024 + 5, 0x55);
    open(audio + Id3v1{.title = "Song"}.bytes());
    world_.files.reset_counts();
    EXPECT_TRUE(record_.Stripv1Tag());
    EXPECT_EQ(content(), audio);
    EXPECT_EQ(world_.files.bytes_written(), audio.size());
    // 3 MiB and a bit: 13 pieces of 256 KiB, 8 of 400 KiB.
    EXPECT_LE(world_.files.calls(FileCall::Copy), 13U);
    EXPECT_GE(world_.files.calls(FileCall::Copy), 8U);
}

TEST_F(StrippingTheRecord, PartialCopiesAreContinued) {
    open(kAudio + Id3v1{.title = "Song"}.bytes());
    world_.files.fail({.call = FileCall::Copy, .from_then_on = true, .kind = Fault::Kind::Shorten});
    EXPECT_TRUE(record_.Stripv1Tag());
    EXPECT_EQ(content(), kAudio);
}

TEST_F(StrippingTheRecord, EachFailingCallLeavesTheOldOrTheNewFileAndNoOther) {
    const Bytes old = kAudio + Id3v1{.title = "Song"}.bytes();
    open(old);
    world_.files.reset_counts();
    ASSERT_TRUE(record_.Stripv1Tag());
    const std::vector<LoggedCall> calls = world_.files.log();
    ASSERT_GT(calls.size(), 10U);
    for (const bool from_then_on : {false, true}) {
        for (std::size_t nth = 1; nth <= calls.size(); ++nth) {
            const FileCall failing = calls[nth - 1].call;
            SCOPED_TRACE(std::to_string(nth) + ": " + std::string(test::name_of(failing)) +
                         (from_then_on ? " from then on" : " once"));
            world_.files.put(kName, old);
            world_.files.fail({.nth = nth, .from_then_on = from_then_on});
            const bool stripped = record_.Stripv1Tag();
            EXPECT_TRUE(world_.files.has_failed());
            world_.files.fail_nothing();
            EXPECT_TRUE(content() == old || content() == kAudio);
            if (stripped) {
                EXPECT_EQ(content(), kAudio);
            }
            EXPECT_EQ(world_.files.open_files(), 0U);
            // Where the removal fails too, the unfinished file cannot but stay.
            if (!from_then_on) {
                EXPECT_EQ(world_.files.names(), std::vector<String>{kName});
            }
            for (const String& name : world_.files.names()) {
                if (name != kName) {
                    world_.files.remove(name);
                }
            }
        }
    }
}

}  // namespace
}  // namespace brindle
