// How much of a file's front is believed to be tag.
#include "id3v2/tag_proof.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/bytes.h"
#include "support/frames.h"
#include "support/id3v1.h"
#include "support/memory_files.h"
#include "support/tags.h"
#include "util/file_window.h"

namespace brindle {
namespace {

using namespace std::string_view_literals;
using test::Bytes;
using test::Frame;
using test::Tag;

const Frame kFrame;  // 417 bytes
const Bytes kAudio = test::stream(kFrame, 5);

ProvenTag prove(const Bytes& content, std::optional<std::int64_t> stream = std::nullopt) {
    test::MemoryFiles files;
    files.put(u"a.mp3", content);
    const auto file = files.open(u"a.mp3", OpenMode::Read);
    FileWindow window(*file);
    return prove_tag(window, 0, stream);
}

std::int64_t size_of(const Bytes& bytes) {
    return static_cast<std::int64_t>(bytes.size());
}

Bytes junk(std::size_t count) {
    return test::repeated(count, 0x55);
}

// 10 + 15 bytes, and 10 + 12.
Tag two_frames(int version = 3) {
    return Tag(version).frame("TIT2", "\0fourteen chars"sv).frame("TPE1", "\0eleven char"sv);
}
constexpr std::uint32_t kTwoFrames = 47;
// After the first of the two: the second frame follows the first one, and none the second.
constexpr std::int64_t kFirstOfTwo = 10 + 25;

// --- tags that add up

struct Whole {
    const char* name;
    Bytes tag;
    Bytes rest = kAudio;
};

void PrintTo(const Whole& row, std::ostream* stream) {
    *stream << row.name;
}

class TagThatAddsUp : public ::testing::TestWithParam<Whole> {};

TEST_P(TagThatAddsUp, IsBelievedToItsEnd) {
    const ProvenTag proven = prove(GetParam().tag + GetParam().rest);
    EXPECT_TRUE(proven.adds_up);
    EXPECT_EQ(proven.end, size_of(GetParam().tag));
}

// A frame with 300 bytes, whose size differs by its form: 0x12C, or 2 x 128 + 44.
Bytes long_frame_with_plain_size() {
    return Bytes("TPE2") + test::big_endian(300, 4) + test::zeros(2) + test::repeated(300, 'x');
}

std::vector<Whole> whole_tags() {
    const Bytes unsynchronised_frame = Bytes("PRIV") + test::big_endian(4, 4) + test::zeros(2) +
                                       Bytes{0xFF, 0x00, 0xE0, 0xFF, 0x00, 0xFB};
    const Bytes footer = Bytes("3DI") + Bytes{4, 0, 0x10} + test::syncsafe(kTwoFrames);
    const Bytes extended3 = test::big_endian(6, 4) + test::zeros(6);
    const Bytes extended4 = test::syncsafe(6) + Bytes{1, 0};
    return {
        {"FramesAlone", two_frames().bytes()},
        {"FramesAndPadding", two_frames().padding(200).bytes()},
        {"PaddingAlone", Tag().padding(90).bytes()},
        {"NothingInIt", Tag().bytes()},
        {"OneFrame", Tag().text("TIT2", "Song").bytes()},
        {"FrameWithoutABody", two_frames().frame("PRIV", "").padding(9).bytes()},
        {"IdThatIsNone", Tag().frame("\0v.\xFF"sv, "read from a damaged tag").padding(9).bytes()},
        {"IdWithABlank", Tag().frame("TT2 ", "\0Song").bytes()},
        {"Version2", Tag(2).text("TT2", "Song").text("TP1", "Band").padding(30).bytes()},
        {"Version4", Tag(4).text("TIT2", test::repeated(300, 'x')).padding(30).bytes()},
        {"Version4WithPlainSizes",
         Tag(4).text("TIT2", "Song").raw(long_frame_with_plain_size()).padding(9).bytes()},
        {"Version4WithAFooter", two_frames(4).flags(0x10).bytes() + footer},
        {"ExtendedHeaderOfVersion3", Tag().flags(0x40).raw(extended3).text("TIT2", "a").bytes()},
        {"ExtendedHeaderOfVersion4", Tag(4).flags(0x40).raw(extended4).text("TIT2", "a").bytes()},
        {"Unsynchronised", Tag().flags(0x80).raw(unsynchronised_frame).padding(7).bytes()},
        {"TwoTagsInARow", two_frames().bytes() + Tag(4).text("TALB", "b").padding(5).bytes()},
        {"ThreeTagsInARow", Tag(2).text("TT2", "a").bytes() + Tag().padding(20).bytes() +
                                Tag(4).text("TALB", "b").bytes()},
        {"InFrontOfAFreeFormatHeader", two_frames().bytes(),
         test::HeaderBits{.bitrate = 0}.bytes()},
        {"InFrontOfARecord", two_frames().bytes(), test::Id3v1().bytes()},
        {"InFrontOfAnApeTag", two_frames().bytes(), "APETAGEX and more"},
        {"AtTheEndOfTheFile", two_frames().bytes(), ""},
        // The last bytes hold a frame, but not one that ends with the tag.
        {"WithAFrameInIt", Tag().frame("GEOB", kFrame.bytes() + kFrame.bytes() + junk(3)).bytes()},
        {"WithAFrameOfAnotherKindAtItsEnd", Tag().frame("GEOB", Frame{.layer = 2}.bytes()).bytes()},
    };
}

INSTANTIATE_TEST_SUITE_P(TagProof, TagThatAddsUp, ::testing::ValuesIn(whole_tags()),
                         [](const auto& run) { return run.param.name; });

// --- tags that do not

struct Doubtful {
    const char* name;
    Bytes content;
    std::int64_t end;
    std::optional<std::int64_t> stream = std::nullopt;
};

void PrintTo(const Doubtful& row, std::ostream* stream) {
    *stream << row.name;
}

class TagThatDoesNotAddUp : public ::testing::TestWithParam<Doubtful> {};

TEST_P(TagThatDoesNotAddUp, IsBelievedAsFarAsFramesFollowFrames) {
    const ProvenTag proven = prove(GetParam().content, GetParam().stream);
    EXPECT_FALSE(proven.adds_up);
    EXPECT_EQ(proven.end, GetParam().end);
}

std::vector<Doubtful> doubtful_tags() {
    const auto claiming = [](std::uint32_t size) { return two_frames().size(size).bytes(); };
    Bytes top_bit = two_frames().bytes();
    top_bit[9] |= 0x80;
    const Bytes wrong_last_size = Tag()
                                      .text("TIT2", "fourteen chars")
                                      .frame_claiming("TPE1", 12 + 7, "\0eleven char"sv)
                                      .bytes();
    const Bytes wrong_first_size = Tag()
                                       .frame_claiming("TIT2", 15 + 7, "\0fourteen chars"sv)
                                       .frame("TPE1", "\0eleven char"sv)
                                       .bytes();
    // Tag and last frame claim the first frame of audio, too.
    const Bytes both_wrong =
        Tag().frame_claiming("TIT2", 15 + 417, "\0fourteen chars"sv).size(25 + 417).bytes();
    // The whole file by both.
    const Bytes all_claimed =
        Tag().frame_claiming("TIT2", 15 + 5 * 417, "\0fourteen chars"sv).size(25 + 5 * 417).bytes();
    const Bytes undefined_flags =
        Bytes("TPE1") + test::big_endian(12, 4) + Bytes{0, 0x01} + "\0eleven char"sv;
    const Bytes missing_footer = two_frames(4).flags(0x10).bytes() + test::zeros(10);
    return {
        {"ClaimsOneByteTooMuch", claiming(kTwoFrames + 1) + kAudio, kFirstOfTwo},
        {"ClaimsOneByteTooFew", claiming(kTwoFrames - 1) + kAudio, kFirstOfTwo},
        {"ClaimsNothing", claiming(0) + kAudio, kFirstOfTwo},
        {"ClaimsMoreThanTheFile", claiming(90'000) + kAudio, kFirstOfTwo},
        {"SizeWithATopBit", top_bit + kAudio, kFirstOfTwo},
        {"LastFrameTooLong", wrong_last_size + kAudio, kFirstOfTwo},
        {"FirstFrameTooLong", wrong_first_size + kAudio, 10},
        {"OneFrameAlone", Tag().text("TIT2", "Song").size(16).bytes() + kAudio, 10},
        {"JunkAfterIt", two_frames().bytes() + junk(9) + kAudio, kFirstOfTwo},
        {"JunkInItsPadding",
         two_frames().padding(50).raw(test::zeros(3) + junk(1)).bytes() + kAudio, kFirstOfTwo},
        {"FrameOfAudioEndsWithIt", both_wrong + kAudio, 10},
        {"AudioAloneFillsIt", all_claimed + kAudio, 10},
        {"AudioFillsItUpToARecord", all_claimed + kAudio + test::Id3v1().bytes(), 10},
        {"StreamInItAndNothingAfterIt", all_claimed + kAudio.first(5 * 417 - 1) + junk(1), 10, 35},
        {"UndefinedFlags",
         Tag().text("TIT2", "fourteen chars").raw(undefined_flags).size(99).bytes() + kAudio, 10},
        {"FollowerOfLowerCase",
         Tag().text("TIT2", "fourteen chars").frame("tpe1", "Band").size(99).bytes() + kAudio, 10},
        {"FollowerWithoutABody",
         Tag().text("TIT2", "fourteen chars").frame("TPE1", "").raw(junk(1)).bytes() + kAudio, 10},
        {"FollowerLargerThanTheFile",
         Tag().text("TIT2", "fourteen chars").frame_claiming("TPE1", 99'999, "x").bytes() + kAudio,
         10},
        {"FrameOfSilenceInIt",
         two_frames().raw(Bytes{0xFF, 0xFB, 0x90, 0x64} + test::zeros(413)).bytes() + kAudio +
             junk(1),
         kFirstOfTwo},
        {"IdThatIsNoneWithoutABody", Tag().frame("\0v.\xFF"sv, "").padding(9).bytes() + kAudio, 10},
        {"IdThatIsNoneWithFlags",
         Tag().raw("Abc." + test::big_endian(4, 4) + Bytes{0, 0x20} + "body").bytes() + kAudio, 10},
        {"FooterMissing", missing_footer + kAudio, kFirstOfTwo},
        {"CompressedVersion2", Tag(2).flags(0x40).text("TT2", "Song").bytes() + kAudio, 10},
        {"FramesOfVersion2",
         Tag(2).text("TT2", "Song").text("TP1", "Band").size(3).bytes() + kAudio, 10 + 11},
        {"UnknownFollowerInVersion2",
         Tag(2).text("TT2", "Song").text("QQQ", "Band").size(3).bytes() + kAudio, 10},
        {"SyncsafeSizes",
         Tag(4).text("TIT2", test::repeated(299, 'x')).text("TPE1", "a").size(3).bytes() + kAudio,
         10 + 310},
        {"PlainSizesInVersion4",
         Tag(4).raw(long_frame_with_plain_size()).text("TPE1", "a").size(3).bytes() + kAudio,
         10 + 310},
        {"FirstTagInFrontOfADoubtfulOne",
         two_frames().bytes() + two_frames().size(3).bytes() + kAudio, kFirstOfTwo},
        {"FramesAfterAnExtendedHeader",
         Tag().flags(0x40)
                 .raw(test::big_endian(6, 4) + test::zeros(6))
                 .text("TIT2", "fourteen chars")
                 .text("TPE1", "a")
                 .size(3)
                 .bytes() +
             kAudio,
         10 + 10 + 25},
    };
}

INSTANTIATE_TEST_SUITE_P(TagProof, TagThatDoesNotAddUp, ::testing::ValuesIn(doubtful_tags()),
                         [](const auto& run) { return run.param.name; });

TEST(TagProof, StreamBeforeOrAfterATagIsNoDoubt) {
    const Bytes tag = two_frames().bytes();
    EXPECT_TRUE(prove(tag + "TAG", 57).adds_up);
    EXPECT_TRUE(prove(tag + kAudio, 57).adds_up);
    EXPECT_TRUE(prove(tag + kAudio, 20).adds_up);  // and audio after it
    EXPECT_FALSE(prove(tag + "TAG", 20).adds_up);
}

}  // namespace
}  // namespace brindle
