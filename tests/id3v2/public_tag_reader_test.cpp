// Tags as the public documents want them read.
#include "id3v2/public_tag_reader.h"

#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include "support/memory_files.h"
#include "support/shrunk_file.h"
#include "support/tags.h"

namespace brindle::test {
namespace {

using namespace std::string_view_literals;

class ReadTag {
public:
    explicit ReadTag(const Bytes& file, std::int64_t position = 0) {
        files_.put(u"a.mp3", file);
        file_ = files_.open(u"a.mp3", OpenMode::Read);
        window_.emplace(*file_);
        tag_ = read_public_tag(*window_, position);
    }

    [[nodiscard]] const std::optional<PublicTag>& tag() const { return tag_; }
    [[nodiscard]] std::uint64_t bytes_read() const { return files_.bytes_read(); }
    // "TIT2=..." with the content, "TIT2 packed" where there is none to be had.
    [[nodiscard]] std::vector<std::string> frames() {
        std::vector<std::string> frames;
        for (const PublicFrame& frame : tag_->frames) {
            const std::string id(frame.id());
            if (frame.is_packed) {
                frames.push_back(id + " packed");
                continue;
            }
            const Bytes content = read_content(*window_, frame, 1000);
            frames.push_back(id + "=" + content.text());
        }
        return frames;
    }

private:
    MemoryFiles files_;
    std::unique_ptr<BinaryFile> file_;
    std::optional<FileWindow> window_;
    std::optional<PublicTag> tag_;
};

std::string with_nul(std::string_view text) {
    return std::string(text);
}

struct Case {
    const char* name;
    Bytes file;
    std::vector<std::string> frames;
};

void PrintTo(const Case& c, std::ostream* stream) {
    *stream << c.name;
}

class PublicTagReaderFrames : public ::testing::TestWithParam<Case> {};

TEST_P(PublicTagReaderFrames, AreFound) {
    ReadTag read(GetParam().file);
    ASSERT_TRUE(read.tag());
    EXPECT_EQ(read.frames(), GetParam().frames);
}

std::vector<Case> cases() {
    const std::string long_text(300, 'x');
    return {
        // clang-format off
        {"Version2", Tag(2).text("TT2", "A").padding(20).bytes(), {with_nul("TT2=\0A"sv)}},
        {"Version3", Tag(3).text("TIT2", "A").text("TPE1", "B").bytes(), {with_nul("TIT2=\0A"sv), with_nul("TPE1=\0B"sv)}},
        {"Version4SyncsafeSize", Tag(4).frame("TIT2", long_text).text("TPE1", "B").bytes(), {"TIT2=" + long_text, with_nul("TPE1=\0B"sv)}},
        {"Version4PlainSize", Tag(4).frame_claiming("TIT2", 300, long_text).text("TPE1", "B").bytes(), {"TIT2=" + long_text, with_nul("TPE1=\0B"sv)}},
        {"Version4PlainSizeAtTheEnd", Tag(4).text("TPE1", "B").frame_claiming("TIT2", 300, long_text).bytes(), {with_nul("TPE1=\0B"sv), "TIT2=" + long_text}},
        {"Version4SizeWithTopBitIsPlain", Tag(4).frame_claiming("TIT2", 200, std::string(200, 'y')).padding(9).bytes(), {"TIT2=" + std::string(200, 'y')}},
        {"Version4OfAsManyWholeFramesEitherWayIsSyncsafe", Tag(4).frame_claiming("TIT2", 256, std::string(128, 'y') + std::string(128, '-')).frame_claiming("TALB", 1000, "AB").bytes(), {"TIT2=" + std::string(128, 'y')}},
        {"PaddingEndsTheTag", Tag(3).text("TIT2", "A").raw(zeros(10)).text("TPE1", "B").bytes(), {with_nul("TIT2=\0A"sv)}},
        {"WhatIsNoIdEndsTheTag", Tag(3).text("TIT2", "A").text("tpe1", "B").text("TALB", "C").bytes(), {with_nul("TIT2=\0A"sv)}},
        {"EmptyFrameIsTold", Tag(3).frame("TIT2", {}).text("TPE1", "B").bytes(), {"TIT2=", with_nul("TPE1=\0B"sv)}},
        {"IdOfThreeLettersInVersion3", Tag(3).raw(Bytes("TT2\0"sv) + big_endian(2, 4) + zeros(2) + "AB").text("TPE1", "B").bytes(), {with_nul("TT2\0=AB"sv), with_nul("TPE1=\0B"sv)}},
        {"FrameLongerThanItsTagHasWhatIsThere", Tag(3).frame_claiming("TIT2", 50, "AB") + Bytes("behind the tag"), {"TIT2=AB"}},
        {"TagLongerThanItsFile", Tag(3).text("TIT2", "A").size(5000).bytes(), {with_nul("TIT2=\0A"sv)}},

        {"UnsynchronisedVersion3", Tag(3).flags(0x80).frame_claiming("TIT2", 3, "A\xFF\0\xE0"sv).text("TPE1", "B").bytes(), {"TIT2=A\xFF\xE0", with_nul("TPE1=\0B"sv)}},
        {"ZeroAloneIsUndone", Tag(3).flags(0x80).frame_claiming("TIT2", 3, "\xFF""A\xFF"sv).text("TPE1", "B").bytes(), {"TIT2=\xFF""A\xFF", with_nul("TPE1=\0B"sv)}},
        {"UnsynchronisedSizeOfVersion3", Tag(3).flags(0x80).raw(Bytes("TIT2\0\0\0\xFF\0\0\0"sv) + std::string(255, 'z')).text("TPE1", "B").bytes(), {"TIT2=" + std::string(255, 'z'), with_nul("TPE1=\0B"sv)}},
        {"UnsynchronisedVersion2", Tag(2).flags(0x80).raw(Bytes("TT2\0\0\2"sv) + "\xFF\0A"sv).text("TP1", "B").bytes(), {"TT2=\xFF""A", with_nul("TP1=\0B"sv)}},
        {"UnsynchronisedFrameOfVersion4", Tag(4).raw(flagged("TIT2", 0x02, "A\xFF\0\xE0"sv)).text("TPE1", "B").bytes(), {"TIT2=A\xFF\xE0", with_nul("TPE1=\0B"sv)}},
        {"UnsynchronisedVersion4CountsWhatStandsThere", Tag(4).flags(0x80).raw(flagged("TIT2", 0, "A\xFF\0\xE0"sv)).text("TPE1", "B").bytes(), {"TIT2=A\xFF\xE0", with_nul("TPE1=\0B"sv)}},

        {"ExtendedHeaderOfVersion3", Tag(3).flags(0x40).raw(big_endian(10, 4) + Bytes{0x80, 0} + zeros(8)).text("TIT2", "A").bytes(), {with_nul("TIT2=\0A"sv)}},
        {"ExtendedHeaderOfVersion4", Tag(4).flags(0x40).raw(syncsafe(12) + Bytes{1, 0x20} + Bytes{5, 0, 0, 0, 0, 0}).text("TIT2", "A").bytes(), {with_nul("TIT2=\0A"sv)}},
        {"ExtendedHeaderThatIsNotThere", Tag(3).flags(0x40).text("TIT2", "A").bytes(), {with_nul("TIT2=\0A"sv)}},

        {"CompressedVersion3", Tag(3).raw(flagged("TIT2", 0x80, "12345"sv)).bytes(), {"TIT2 packed"}},
        {"EncryptedVersion3", Tag(3).raw(flagged("TIT2", 0x40, "12345"sv)).bytes(), {"TIT2 packed"}},
        {"GroupedVersion3", Tag(3).raw(flagged("TIT2", 0x20, "\7A"sv)).bytes(), {"TIT2=A"}},
        {"CompressedVersion4", Tag(4).raw(flagged("TIT2", 0x09, "12345"sv)).bytes(), {"TIT2 packed"}},
        {"EncryptedVersion4", Tag(4).raw(flagged("TIT2", 0x04, "12345"sv)).bytes(), {"TIT2 packed"}},
        {"GroupedVersion4WithLength", Tag(4).raw(flagged("TIT2", 0x41, "\7\0\0\0\1A"sv)).bytes(), {"TIT2=A"}},
        {"CompressedVersion2TagIsIgnored", Tag(2).flags(0x40).text("TT2", "A").bytes(), {}},
        // clang-format on
    };
}

INSTANTIATE_TEST_SUITE_P(PublicTagReader, PublicTagReaderFrames, ::testing::ValuesIn(cases()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(PublicTagReader, TagEndsAfterItsPaddingAndFooter) {
    EXPECT_EQ(ReadTag(Tag(3).text("TIT2", "A").padded_to(100).bytes()).tag()->end, 100);
    // The flag of version 4 for a footer of ten bytes.
    EXPECT_EQ(ReadTag(Tag(4).flags(0x10).text("TIT2", "A").padded_to(100) + zeros(50)).tag()->end,
              110);
}

TEST(PublicTagReader, OnlyTagHeadersOfKnownVersionsAreTags) {
    EXPECT_FALSE(ReadTag("ID3\1\0\0\0\0\0\0"sv).tag());
    EXPECT_FALSE(ReadTag("ID3\5\0\0\0\0\0\0"sv).tag());
    EXPECT_FALSE(ReadTag("TAG\3\0\0\0\0\0\0"sv).tag());
    EXPECT_FALSE(ReadTag("ID3\3\0\0\0\0\0"sv).tag()) << "nine bytes";
    EXPECT_TRUE(ReadTag("ID3\3\0\0\0\0\0\0"sv).tag());
}

TEST(PublicTagReader, FramePlacesAreThoseInTheFile) {
    const ReadTag read(Bytes("junk") + Tag(3).text("TIT2", "Song").text("TPE1", "A").bytes(), 4);
    const PublicFrame& second = read.tag()->frames.at(1);
    EXPECT_EQ(second.position, 4 + 10 + 15);
    EXPECT_EQ(second.body, second.position + 10);
    EXPECT_EQ(second.body_end, second.body + 2);
    EXPECT_EQ(second.size, 2);
}

TEST(PublicTagReader, BodiesAreSteppedOver) {
    const ReadTag read(Tag(3).frame("GEOB", repeated(9'000'000, 'a')).text("TIT2", "A").bytes());
    EXPECT_EQ(read.tag()->frames.size(), 2U);
    EXPECT_LT(read.bytes_read(), 100'000U);
}

TEST(PublicTagReader, TagThatWasCutSinceEndsWithTheFile) {
    const Bytes whole = Tag(3).text("TIT2", "A").text("TPE1", "B").bytes();
    ShrunkFile file(whole.first(10 + 12 + 5), static_cast<std::int64_t>(whole.size()));
    FileWindow window(file);
    const std::optional<PublicTag> tag = read_public_tag(window, 0);
    ASSERT_TRUE(tag);
    ASSERT_EQ(tag->frames.size(), 1U);
    EXPECT_EQ(tag->frames[0].id(), "TIT2");
}

// With any content: frames lie in the file, one after the other.
RC_GTEST_PROP(PublicTagReader, FramesOfAnyBytesLieInTheFileInOrder, ()) {
    const auto version = *rc::gen::inRange(2, 5);
    const auto flags = *rc::gen::arbitrary<std::uint8_t>();
    // Few different bytes, so that ids and sizes come about.
    const auto body = *rc::gen::container<std::vector<std::uint8_t>>(
        rc::gen::element<std::uint8_t>(0, 0, 0, 1, 2, 9, 'T', 'A', 0xFF, 0x80));
    const Bytes file = Tag(version).flags(flags).raw(Bytes(body)).bytes();
    const ReadTag read(file);
    RC_ASSERT(read.tag().has_value());
    std::int64_t position = 10;
    for (const PublicFrame& frame : read.tag()->frames) {
        RC_ASSERT(frame.position >= position);
        RC_ASSERT(frame.body > frame.position);
        // A frame may be empty, or claim a body that the tag has no room for.
        RC_ASSERT(frame.size >= 0);
        RC_ASSERT(frame.size <= frame.body_end - frame.body);
        position = frame.body_end;
    }
    RC_ASSERT(position <= static_cast<std::int64_t>(file.size()));
}

}  // namespace
}  // namespace brindle::test
