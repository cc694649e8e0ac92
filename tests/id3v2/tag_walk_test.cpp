#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "id3v2/walked_tag.h"
#include "support/tags.h"

namespace brindle {
namespace {

using namespace std::string_view_literals;
using test::big_endian;
using test::Bytes;
using test::Frames;
using test::repeated;
using test::Tag;
using test::WalkedTag;
using test::widened;
using test::zeros;

const Bytes kNul = zeros(1);

struct WalkCase {
    const char* name;
    Bytes file;
    Frames frames;
    bool corrupt = false;
};

// A plain frame of version 3, whose encoding byte is 0.
Bytes text(std::string_view id, std::string_view value) {
    return Bytes(id) + big_endian(value.size() + 1, 4) + zeros(2) + kNul + Bytes(value);
}

void expect_frames(const std::vector<WalkCase>& cases) {
    for (const WalkCase& walk : cases) {
        const WalkedTag tag(walk.file);
        EXPECT_EQ(tag.frames(), walk.frames) << walk.name;
        EXPECT_EQ(tag.facts().corrupt, walk.corrupt) << walk.name;
        EXPECT_FALSE(tag.facts().fault) << walk.name;
    }
}

TEST(TagWalk, TheHeaderGivesVersionAndSize) {
    const WalkedTag tag(Tag(4).padded_to(300).bytes());
    EXPECT_EQ(tag.facts().version, 4);
    EXPECT_EQ(tag.facts().size, 290);
}

TEST(TagWalk, TopBitsOfTheSizeCount) {
    // 128 x 128 + 1
    const WalkedTag tag(Bytes("ID3") + Bytes{3, 0, 0, 0, 0, 128, 1});
    EXPECT_EQ(tag.facts().size, 16385);
}

TEST(TagWalk, RevisionAndFlagsAreIgnored) {
    expect_frames({
        {"all flags, odd revision",
         Tag(3).flags(0xFF).revision(9).text("TIT2", "A").bytes(),
         {{u"TIT2", {u"A"}}}},
        // An extended header of 10 bytes is taken for a frame: its id is its size, 00 00 00 06.
        {"extended header is a frame",
         Tag(3).flags(0x40).raw(big_endian(6, 4) + zeros(6)).text("TIT2", "A").bytes(),
         {{u"TIT2", {u"A"}}}},
        {"unsynchronisation stays",
         Tag(3).flags(0x80).frame("TIT2", Bytes{0, 0xFF, 0x00, 0xE0}).bytes(),
         {{u"TIT2", {u"\u00FF\u00E0"}}}},
    });
}

TEST(TagWalk, FramesAreFiledUnderIdAndNumberInTheOrderFirstSeen) {
    expect_frames({
        {"two ids, one of them twice",
         Tag(3).text("TPE1", "x").text("TIT2", "A").text("TPE1", "y").bytes(),
         {{u"TPE1", {u"x", u"y"}}, {u"TIT2", {u"A"}}}},
        {"an id of any four bytes",
         Tag(3).raw(text("\x01\xFFz ", "v")).bytes(),
         {{u"\x01\u00FFz ", {u"v"}}}},
        {"an id with NULs in it",
         Tag(3).raw(text("A\0\0B"sv, "v")).bytes(),
         {{widened("A\0\0B"sv), {u"v"}}}},
        {"no frame", Tag(3).padded_to(100).bytes(), {}},
        {"no byte after the header", Tag(3).bytes(), {}},
    });
}

TEST(TagWalk, FourNulsInPlaceOfAnIdEndTheWalk) {
    expect_frames({
        {"padding, then a frame",
         Tag(3).text("TIT2", "A").raw(zeros(10)).text("TALB", "B").bytes(),
         {{u"TIT2", {u"A"}}}},
        {"NULs whose size is not 0",
         Tag(3).raw(zeros(4) + big_endian(5, 4) + zeros(7)).text("TALB", "B").bytes(),
         {}},
    });
}

TEST(TagWalk, WhatAFrameHoldsDependsOnItsFirstNul) {
    expect_frames({
        {"ISO-8859-1", Tag(3).frame("TIT2", "\0Song"sv).bytes(), {{u"TIT2", {u"Song"}}}},
        {"no NUL at all", Tag(3).frame("TIT2", "Song").bytes(), {{u"TIT2", {u"Song"}}}},
        {"UTF-8 keeps its encoding byte",
         Tag(4).frame("TIT2", "\3Song").bytes(),
         {{u"TIT2", {u"\3Song"}}}},
        {"UTF-8 with a closing NUL loses its text",
         Tag(4).frame("TIT2", "\3Song\0"sv).bytes(),
         {{u"TIT2", {u""}}}},
        {"a closing NUL goes", Tag(3).frame("TIT2", "\0Song\0"sv).bytes(), {{u"TIT2", {u"Song"}}}},
        {"several texts run together",
         Tag(4).frame("TIT2", "\0A\0B"sv).bytes(),
         {{u"TIT2", {u"AB"}}}},
        {"text before the first NUL goes",
         Tag(3).frame("TIT2", "ab\0cd"sv).bytes(),
         {{u"TIT2", {u"cd"}}}},
        {"one NUL", Tag(3).frame("TIT2", "\0"sv).bytes(), {{u"TIT2", {u""}}}},
        {"comment", Tag(3).comment("eng", "d", "text").bytes(), {{u"COMM", {u"engdtext"}}}},
        {"lyrics", Tag(3).lyrics("eng", "d", "text").bytes(), {{u"USLT", {u"engdtext"}}}},
        {"link with description",
         Tag(3).frame("WXXX", "\0d\0http://u"sv).bytes(),
         {{u"WXXX", {u"dhttp://u"}}}},
        {"link without encoding",
         Tag(3).frame("WOAR", "http://u").bytes(),
         {{u"WOAR", {u"http://u"}}}},
        {"counter, four bytes",
         Tag(3).frame("PCNT", Bytes{0, 0, 0, 7}).bytes(),
         {{u"PCNT", {u"\7"}}}},
        {"code page",
         Tag(3).frame("TIT2", Bytes{0, 0x80, 0xE4, 0x81}).bytes(),
         {{u"TIT2", {u"\u20AC\u00E4\u0081"}}}},
    });
}

TEST(TagWalk, Utf16TextOfTheAsciiRangeBecomes8BitText) {
    expect_frames({
        {"little-endian with mark",
         Tag(3).utf16_text("TIT2", u"Song").bytes(),
         {{u"TIT2", {u"Song"}}}},
        {"mark only", Tag(3).utf16_text("TIT2", u"").bytes(), {{u"TIT2", {u""}}}},
        // U+0416 is 16 04, U+20AC is AC 20.
        {"other letters become their bytes",
         Tag(3).utf16_text("TIT2", u"\u0416\u20AC").bytes(),
         {{u"TIT2", {u"\x16\x04\u00AC "}}}},
        // No mark that is known: the text after the first NUL, then without NULs.
        {"big-endian with mark",
         Tag(3).frame("TIT2", "\1\xFE\xFF\0S\0o"sv).bytes(),
         {{u"TIT2", {u"So"}}}},
        {"big-endian without mark",
         Tag(4).frame("TIT2", "\2\0S\0o"sv).bytes(),
         {{u"TIT2", {u"So"}}}},
        {"little-endian without mark",
         Tag(3).frame("TIT2", "\1S\0o\0"sv).bytes(),
         {{u"TIT2", {u"o"}}}},
        {"mark cut off", Tag(3).frame("TIT2", "\1\xFF").bytes(), {{u"TIT2", {u"\1\u00FF"}}}},
        {"mark without encoding byte",
         Tag(3).frame("TIT2", "\xFF\xFES\0"sv).bytes(),
         {{u"TIT2", {u""}}}},
    });
}

TEST(TagWalk, CustomFramesLoseTheirLeadingNulsOnly) {
    expect_frames({
        {"as usual",
         Tag(3).field("Cue In", "1500").bytes(),
         {{u"TXXX",
           {widened("Cue In\0"
                    "1500"sv)}}}},
        {"further pieces stay",
         Tag(3).frame("TXXX", "\0a\0b\0c\0"sv).bytes(),
         {{u"TXXX", {widened("a\0b\0c\0"sv)}}}},
        {"empty description", Tag(3).field("", "v").bytes(), {{u"TXXX", {u"v"}}}},
        {"NULs only", Tag(3).frame("TXXX", zeros(3)).bytes(), {{u"TXXX", {u""}}}},
        {"no NUL at all: not filed",
         Tag(3).frame("TXXX", "abc").text("TIT2", "A").bytes(),
         {{u"TIT2", {u"A"}}}},
        {"UTF-8 keeps its encoding byte",
         Tag(4).frame("TXXX", "\3a\0b"sv).bytes(),
         {{u"TXXX", {widened("\3a\0b"sv)}}}},
        {"UTF-16 stays as it is",
         Tag(3)
             .frame("TXXX",
                    "\1\xFF\xFE"
                    "a\0\0\0b\0"sv)
             .bytes(),
         {{u"TXXX",
           {widened("\1\xFF\xFE"
                    "a\0\0\0b\0"sv)}}}},
    });
}

TEST(TagWalk, CustomFieldsAreTheTextsBetweenTheFirstNuls) {
    const WalkedTag tag(Tag(3)
                            .field("Cue In", "1500")
                            .frame("TXXX", "\0a\0b\0c"sv)
                            .field("", "v")
                            .field("empty", "")
                            .frame("TXXX",
                                   "\1\xFF\xFE"
                                   "u\0\0\0x\0"sv)
                            .frame("TXXX", "\3w\0x"sv)
                            .bytes());
    EXPECT_EQ(tag.custom(u"Cue In"), u"1500");
    EXPECT_EQ(tag.custom(u"cue in"), u"(absent)");
    EXPECT_EQ(tag.custom(u"a"), u"b");
    EXPECT_EQ(tag.custom(u"empty"), u"");
    EXPECT_EQ(tag.custom(u""), u"(absent)") << "an empty description never gets here";
    EXPECT_EQ(tag.custom(u"v"), u"(absent)") << "one piece only";
    EXPECT_EQ(tag.custom(u"\1\u00FF\u00FEu"), u"") << "the piece between two NULs";
    EXPECT_EQ(tag.custom(u"\3w"), u"x");
}

TEST(TagWalk, TwoCustomFramesOfOneDescriptionAreBothHeldAndTheFirstIsTheField) {
    const WalkedTag tag(Tag(3).field("Intro", "1").field("Intro", "2").bytes());
    EXPECT_EQ(tag.frames(), (Frames{{u"TXXX",
                                     {widened("Intro\0"
                                              "1"sv),
                                      widened("Intro\0"
                                              "2"sv)}}}));
    EXPECT_EQ(tag.custom(u"Intro"), u"1");
}

TEST(TagWalk, PicturesStayByteForByte) {
    const Bytes body = "\0image/png\0\3d\0\x89PNG\0\0\1"sv;
    expect_frames({
        {"APIC", Tag(3).frame("APIC", body).bytes(), {{u"APIC", {widened(body.text())}}}},
        {"UTF-16 mark stays",
         Tag(3)
             .frame("APIC",
                    "\1\xFF\xFE"
                    "a\0"sv)
             .bytes(),
         {{u"APIC",
           {widened("\1\xFF\xFE"
                    "a\0"sv)}}}},
        {"PIC of version 2",
         Tag(2).frame("PIC", "\0PNG\3\0\x89\0"sv).padding(9).bytes(),
         {{u"APIC", {widened("\0PNG\3\0\x89\0"sv)}}}},
        {"all NULs", Tag(3).frame("APIC", zeros(5)).bytes(), {{u"APIC", {String(5, u'\0')}}}},
    });
}

// A frame above its limit is stepped over by its header alone, so that its data is read as the
// next header.
TEST(TagWalk, FramesUpToTheirLimitAreHeld) {
    const auto body = [&](std::size_t size) { return kNul + repeated(size - 1, 'x'); };
    const String held(4999, u'x');
    expect_frames({
        {"text of 5,000 bytes",
         Tag(3).frame("TIT2", body(5000)).text("TALB", "B").bytes(),
         {{u"TIT2", {held}}, {u"TALB", {u"B"}}}},
        {"custom frame of 5,000 bytes",
         Tag(3).frame("TXXX", body(5000)).bytes(),
         {{u"TXXX", {held}}}},
        {"picture of 81,920 bytes",
         Tag(3).frame("APIC", repeated(81920, 'p')).text("TALB", "B").bytes(),
         {{u"APIC", {String(81920, u'p')}}, {u"TALB", {u"B"}}}},
        // Data "\0xxx..." : id 00 78 78 78, size 0x78787878 is above 16 MiB.
        {"text of 5,001 bytes",
         Tag(3).frame("TIT2", body(5001)).text("TALB", "B").bytes(),
         {},
         true},
        {"picture of 81,921 bytes",
         Tag(3).frame("APIC", body(81921)).text("TALB", "B").bytes(),
         {},
         true},
        {"data of a skipped frame is the next header",
         Tag(3).frame("TIT2", text("TALB", "B") + zeros(4988 + 2)).bytes(),
         {{u"TALB", {u"B"}}}},
        {"data of NULs ends the walk",
         Tag(3).frame("TIT2", zeros(5001)).text("TALB", "B").bytes(),
         {}},
    });
}

TEST(TagWalk, EmptyFramesAreNotFiled) {
    expect_frames({
        {"size 0", Tag(3).frame("TIT2", {}).text("TALB", "B").bytes(), {{u"TALB", {u"B"}}}},
        {"picture of size 0",
         Tag(3).frame("APIC", {}).text("TALB", "B").bytes(),
         {{u"TALB", {u"B"}}}},
    });
}

TEST(TagWalk, ASizeAbove16MibIsCorruptAndEndsTheWalk) {
    const auto claiming = [](std::uint32_t size) {
        return Tag(3)
            .text("TPE1", "x")
            .frame_claiming("TIT2", size, "\0A"sv)
            .text("TALB", "B")
            .bytes();
    };
    const Frames before{{u"TPE1", {u"x"}}};
    expect_frames({
        {"16,777,217", claiming(16777217), before, true},
        {"2^31 - 1", claiming(2147483647), before, true},
        {"2^31", claiming(2147483648U), before, true},
        {"2^32 - 1", claiming(4294967295U), before, true},
        {"16,777,216 is skipped",
         Tag(3).text("TPE1", "x").frame_claiming("TIT2", 16777216, zeros(10)).bytes(), before},
        {"2^31 in version 4",
         Tag(4).text("TPE1", "x").frame_claiming("TIT2", 2147483648U, "\0A"sv).bytes(), before,
         true},
    });
}

// Size bytes 00 00 01 48 are syncsafe for 200, but plain for 328.
TEST(TagWalk, SyncsafeFrameSizesAbove127AreReadAsPlainOnes) {
    const std::string first(199, 'a');
    const std::string second(199, 'b');
    const WalkedTag tag(Tag(4).text("TIT2", first).text("TALB", second).padding(200).bytes());
    // 328 bytes from the first body on: its 200, the 10 of the next header, 118 of the next body
    // (its encoding byte and 117 letters). What follows is the rest "bbbb...": id "bbbb", size
    // 0x62626262, corrupt. NULs: the encoding bytes, 2 of the size 00 00 01 48, 2 flags.
    const std::string value = first + "TALB\x01\x48" + std::string(117, 'b');
    EXPECT_EQ(tag.frames(), (Frames{{u"TIT2", {widened(value)}}}));
    EXPECT_TRUE(tag.facts().corrupt);
}

TEST(TagWalk, SyncsafeFrameSizesUpTo127AreRight) {
    const std::string value(126, 'a');
    const WalkedTag tag(Tag(4).text("TIT2", value).text("TALB", "B").bytes());
    EXPECT_EQ(tag.frames(), (Frames{{u"TIT2", {widened(value)}}, {u"TALB", {u"B"}}}));
}

// The walk ends when the next byte to be read, counted from 1, lies beyond the tag size, which
// does not count the tag's own header.
TEST(TagWalk, TheWalkEndsWhereThePositionPassesTheTagSize) {
    // Frames of 12 bytes: the first ends at 22, the second at 34, the third at 46.
    const Bytes frames = text("TIT2", "A") + text("TALB", "B") + text("TPE1", "C");
    const Frames one{{u"TIT2", {u"A"}}};
    const Frames two{{u"TIT2", {u"A"}}, {u"TALB", {u"B"}}};
    const Frames three{{u"TIT2", {u"A"}}, {u"TALB", {u"B"}}, {u"TPE1", {u"C"}}};
    const auto tag = [&](std::uint32_t size) { return Tag(3).raw(frames).size(size).bytes(); };
    expect_frames({
        {"size 0 still reads one frame", tag(0), one},
        {"22: the next byte is 23", tag(22), one},
        {"23", tag(23), two},
        {"34", tag(34), two},
        {"35", tag(35), three},
        {"as it is, 36", tag(36), three},
        {"larger than the file", tag(100000), three},
    });
}

TEST(TagWalk, TheTestAlsoAppliesAfterSkippedFrames) {
    // A skipped frame of 10 bytes ends at 20: position 21.
    const Bytes frames = Bytes("TIT2") + zeros(6) + text("TALB", "B");
    const auto tag = [&](std::uint32_t size) { return Tag(3).raw(frames).size(size).bytes(); };
    expect_frames({
        {"20", tag(20), {}},
        {"21", tag(21), {{u"TALB", {u"B"}}}},
    });
}

TEST(TagWalk, AfterJunkTheWalkEndsThatMuchEarlier) {
    const Bytes frames = text("TIT2", "A") + text("TALB", "B") + text("TPE1", "C");
    const Bytes file = repeated(12, 'j') + Tag(3).raw(frames).bytes();
    // The tag says 36. The first frame ends at 12 + 22 = 34: position 35, not beyond; the second
    // at 46: position 47, beyond.
    const WalkedTag tag(file, 12);
    EXPECT_EQ(tag.frames(), (Frames{{u"TIT2", {u"A"}}, {u"TALB", {u"B"}}}));
}

TEST(TagWalk, WhatTheFilesEndCutsOffIsPadding) {
    const Bytes whole = Tag(3).text("TIT2", "Song").bytes();
    // 10 + 10 + 5 bytes
    const auto cut = [&](std::size_t length) { return whole.first(length); };
    expect_frames({
        {"inside the value", cut(23), {{u"TIT2", {u"So"}}}},
        {"after the encoding byte", cut(21), {{u"TIT2", {u""}}}},
        {"before the value", cut(20), {{u"TIT2", {u""}}}},
        // The size is 0 then.
        {"inside the size", cut(17), {}},
        {"inside the id", cut(12), {}},
        {"after the tag header", cut(10), {}},
        {"inside the tag header", cut(5), {}},
        {"a claimed size beyond the end",
         Tag(3).frame_claiming("TIT2", 4000, "\0Song"sv).bytes(),
         {{u"TIT2", {u"Song"}}}},
        {"a claimed size swallows the rest",
         Tag(3).frame_claiming("TIT2", 4000, "\0Song"sv).text("TALB", "B").bytes(),
         {{u"TIT2", {u"SongTALB\2B"}}}},
    });
}

TEST(TagWalk, AHeaderCutByTheFilesEndHasNoSize) {
    const WalkedTag tag(Bytes("ID3") + Bytes{3, 0, 0, 0, 0, 2});
    // 2 x 128, the last byte is missing.
    EXPECT_EQ(tag.facts().size, 256);
    EXPECT_EQ(tag.facts().version, 3);
}

// Version 2: headers of 6 bytes, counted as 9.
TEST(TagWalk, Version2FramesAreFiledUnderTheirVersion3Ids) {
    expect_frames({
        {"title and artist",
         Tag(2).text("TT2", "A").text("TP1", "x").padding(50).bytes(),
         {{u"TIT2", {u"A"}}, {u"TPE1", {u"x"}}}},
        {"others under the empty id",
         Tag(2).text("TP2", "a").text("TT2", "A").text("TXX", "b").padding(50).bytes(),
         {{u"", {u"a", u"b"}}, {u"TIT2", {u"A"}}}},
        {"an empty frame is filed",
         Tag(2).frame("TT2", {}).text("TP1", "x").padding(50).bytes(),
         {{u"TIT2", {u""}}, {u"TPE1", {u"x"}}}},
        {"NULs go, other encoding bytes stay",
         Tag(2).frame("TT2", "\1\xFF\xFES\0"sv).frame("TP1", "\0a\0b"sv).padding(50).bytes(),
         {{u"TIT2", {u"\1\u00FF\u00FES"}}, {u"TPE1", {u"ab"}}}},
        {"NULs go under the empty id too",
         Tag(2).frame("TXX", "\0d\0v"sv).padding(50).bytes(),
         {{u"", {u"dv"}}}},
        {"three NULs end the walk",
         Tag(2).text("TT2", "A").raw(zeros(6)).text("TP1", "x").padding(50).bytes(),
         {{u"TIT2", {u"A"}}}},
        {"a number of values",
         Tag(2).text("COM", "a").text("COM", "b").padding(50).bytes(),
         {{u"COMM", {u"a", u"b"}}}},
    });
}

TEST(TagWalk, Version2TextOfAnyLengthLosesItsNuls) {
    const auto value = [](std::size_t letters) {
        return zeros(1) + repeated(letters, 'x') + zeros(1);
    };
    expect_frames({
        {"81,920 bytes",
         Tag(2).frame("TT2", value(81918)).padding(50).bytes(),
         {{u"TIT2", {String(81918, u'x')}}}},
        {"81,921 bytes",
         Tag(2).frame("TT2", value(81919)).padding(50).bytes(),
         {{u"TIT2", {String(81919, u'x')}}}},
        {"81,921 bytes, unmapped",
         Tag(2).frame("TXX", value(81919)).padding(50).bytes(),
         {{u"", {String(81919, u'x')}}}},
        {"a picture of 200,000 bytes",
         Tag(2).frame("PIC", zeros(200000)).padding(50).bytes(),
         {{u"APIC", {String(200000, u'\0')}}}},
    });
}

// The count goes up by 9 for each header and by each size; a frame that takes it beyond the tag
// size ends the walk.
TEST(TagWalk, Version2TagsEndWhereTheirCountPassesTheTagSize) {
    const auto frame = [](std::string_view id) {
        return Bytes(id) + big_endian(2, 3) + Bytes("\0A"sv);
    };
    // Two frames: counts 11 and 22; they end at 18 and 26 (position 19 and 27).
    const Bytes frames = frame("TT2") + frame("TP1") + frame("TAL");
    const auto tag = [&](std::uint32_t size) { return Tag(2).raw(frames).size(size).bytes(); };
    const Frames one{{u"TIT2", {u"A"}}};
    const Frames two{{u"TIT2", {u"A"}}, {u"TPE1", {u"A"}}};
    const Frames three{{u"TIT2", {u"A"}}, {u"TPE1", {u"A"}}, {u"TALB", {u"A"}}};
    expect_frames({
        {"10: below the first count", tag(10), {}},
        {"11", tag(11), one},
        // 18: the position 19 is beyond, though the second count would be too.
        {"18", tag(18), one},
        {"21: below the second count", tag(21), one},
        {"22", tag(22), two},
        {"26: the position 27 is beyond", tag(26), two},
        {"32: below the third count", tag(32), two},
        {"33", tag(33), three},
    });
}

TEST(TagWalk, Version2IsNeverCorrupt) {
    expect_frames({
        {"largest size",
         Tag(2).text("TT2", "A").raw(Bytes("TP1") + repeated(3, 0xFF)).bytes(),
         {{u"TIT2", {u"A"}}}},
    });
}

TEST(TagWalk, Version2DataEndsWhereTheFileEnds) {
    const WalkedTag tag(
        Tag(2).raw(Bytes("TT2") + big_endian(1000, 3) + Bytes("\0Song"sv)).size(5000).bytes());
    EXPECT_EQ(tag.frames(), (Frames{{u"TIT2", {u"Song"}}}));
}

TEST(TagWalk, StandardFieldsTakeTheLastValue) {
    const WalkedTag tag(Tag(3).text("TIT2", "A").text("TIT2", "B").bytes());
    EXPECT_EQ(tag.field(StandardField::Title), u"B");
}

struct FieldCase {
    const char* id;
    StandardField field;
};

TEST(TagWalk, EachStandardFrameFillsItsField) {
    constexpr FieldCase kFields[] = {
        {"TIT2", StandardField::Title},          {"TPE1", StandardField::Artist},
        {"TALB", StandardField::Album},          {"TYER", StandardField::Year},
        {"TRCK", StandardField::Track},          {"COMM", StandardField::Comment},
        {"TCON", StandardField::OtherGenreName}, {"TCOP", StandardField::CopyRight},
        {"TOPE", StandardField::OriginalArtist}, {"TCOM", StandardField::Composer},
        {"TPUB", StandardField::Publisher},      {"TENC", StandardField::EncodedBy},
        {"PCNT", StandardField::PlayCounter},    {"WXXX", StandardField::LinkTo},
        {"WOAF", StandardField::AudioUrl},       {"WOAR", StandardField::ArtistUrl},
        {"WCOM", StandardField::BuyUrl},         {"USLT", StandardField::Lyrics},
    };
    for (const FieldCase& row : kFields) {
        const WalkedTag tag(Tag(3).text(row.id, "value").bytes());
        for (const FieldCase& other : kFields) {
            EXPECT_EQ(tag.field(other.field), other.field == row.field ? u"value" : u"")
                << row.id << ' ' << other.id;
        }
    }
}

TEST(TagWalk, CommentsOfOneTagReadAsLines) {
    const WalkedTag tag(Tag(3).comment("eng", "", "Hi").comment("eng", "", "Ho").bytes());
    EXPECT_EQ(tag.frames(), (Frames{{u"COMM", {u"engHi", u"engHo"}}}));
    // The NUL before the line break is removed for the reader.
    EXPECT_EQ(tag.field(StandardField::Comment), u"engHi\r\nengHo");
}

TEST(TagWalk, AnEmptyFirstCommentLeavesNoLine) {
    const WalkedTag tag(
        Tag(3).frame("COMM", "\0"sv).text("COMM", "a").frame("COMM", "\0"sv).bytes());
    EXPECT_EQ(tag.field(StandardField::Comment), u"a\r\n");
}

TEST(TagWalk, AGenreThatDoesNotReadKeepsTheNumberOfTheOneBefore) {
    const WalkedTag tag(Tag(3).text("TCON", "(179)").text("TCON", "Polka").bytes());
    EXPECT_EQ(tag.contents().genre(), 17);
    EXPECT_EQ(tag.field(StandardField::OtherGenreName), u"Polka");
}

}  // namespace
}  // namespace brindle
