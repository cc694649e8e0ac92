// Frames of each version as frames of version 2.3. What is expected was written down by hand from
// the public documents.
#include "id3v2/imported_frame.h"

#include <string>

#include <gtest/gtest.h>

#include "support/bytes.h"
#include "support/memory_files.h"

namespace brindle::test {
namespace {

using namespace std::string_view_literals;

// The one frame of a tag, imported.
class Imported {
public:
    Imported(std::uint8_t version, std::uint8_t tag_flags, const Bytes& frame) {
        files_.put(u"a.mp3", Bytes("ID3") + Bytes{version, 0, tag_flags} +
                                 syncsafe(static_cast<std::uint32_t>(frame.size())) + frame);
        file_ = files_.open(u"a.mp3", OpenMode::Read);
        FileWindow window(*file_);
        const std::optional<PublicTag> tag = read_public_tag(window, 0);
        if (tag && tag->frames.size() == 1) {
            frame_ = import_frame(*file_, version, tag->frames[0]);
        }
    }

    [[nodiscard]] bool is_lost() const { return !frame_; }
    // Id, flags and body.
    [[nodiscard]] Bytes bytes() const {
        Bytes all(frame_->id());
        all += Bytes{frame_->flags[0], frame_->flags[1]};
        const auto body = frame_->body.read_all();
        return all + Bytes(body);
    }
    [[nodiscard]] bool is_converted() const { return frame_->is_converted; }
    [[nodiscard]] std::string head() const {
        const auto head = frame_->head(100);
        return {head.begin(), head.end()};
    }

private:
    MemoryFiles files_;
    std::unique_ptr<BinaryFile> file_;
    std::optional<ImportedFrame> frame_;
};

struct Case {
    std::string_view name;
    std::uint8_t version;
    std::uint8_t tag_flags;
    std::string_view frame;     // as stored in the file
    std::string_view expected;  // id, flags, body
};

void PrintTo(const Case& c, std::ostream* out) {
    *out << c.name;
}

class ImportedFrames : public testing::TestWithParam<Case> {};

TEST_P(ImportedFrames, AreThoseOfVersion3) {
    const Case& c = GetParam();
    const Imported imported(c.version, c.tag_flags, Bytes(c.frame));
    ASSERT_FALSE(imported.is_lost());
    EXPECT_EQ(imported.bytes(), Bytes(c.expected));
}

constexpr Case kCases[] = {
    {"Version3Stays", 3, 0, "TIT2\0\0\0\5\xE0\0\3abcd"sv, "TIT2\xE0\0\3abcd"sv},
    {"Version3WithItsPrefixStays", 3, 0, "TIT2\0\0\0\6\0\x20G\0Song"sv, "TIT2\0\x20G\0Song"sv},
    {"UnsynchronisationOfTheWholeTagIsUndone", 3, 0x80, "PRIV\0\0\0\4\0\0a\xFF\0\0b"sv,
     "PRIV\0\0a\xFF\0b"sv},
    {"Latin1Stays", 4, 0, "TIT2\0\0\0\5\0\0\0Song"sv, "TIT2\0\0\0Song"sv},
    {"Utf16WithAMarkStays", 4, 0, "TIT2\0\0\0\5\0\0\1\xFF\xFE\x61\0"sv,
     "TIT2\0\0\1\xFF\xFE\x61\0"sv},
    {"Utf8BecomesUtf16", 4, 0, "TIT2\0\0\0\4\0\0\3\xC3\xBC!"sv, "TIT2\0\0\1\xFF\xFE\xFC\0!\0"sv},
    {"BigEndianBecomesLittleEndian", 4, 0, "TIT2\0\0\0\5\0\0\2\0a\x4E\x2D"sv,
     "TIT2\0\0\1\xFF\xFE\x61\0\x2D\x4E"sv},
    {"FourBytesBecomeASurrogatePair", 4, 0, "TIT2\0\0\0\5\0\0\3\xF0\x9F\x8E\xB5"sv,
     "TIT2\0\0\1\xFF\xFE\x3C\xD8\xB5\xDF"sv},
    {"WhatIsNoUtf8BecomesTheReplacement", 4, 0, "TIT2\0\0\0\4\0\0\3\xC3(\xFF"sv,
     "TIT2\0\0\1\xFF\xFE\xFD\xFF(\0\xFD\xFF"sv},
    {"EmptyTextStaysAString", 4, 0, "TIT2\0\0\0\1\0\0\3"sv, "TIT2\0\0\1\xFF\xFE"sv},
    {"EachValueHasItsMark", 4, 0, "TPE1\0\0\0\4\0\0\3A\0B"sv,
     "TPE1\0\0\1\xFF\xFE\x41\0\0\0\xFF\xFE\x42\0"sv},
    {"TerminatorStays", 4, 0, "TPE1\0\0\0\3\0\0\3A\0"sv, "TPE1\0\0\1\xFF\xFE\x41\0\0\0"sv},
    {"UserTextHasTwoMarks", 4, 0, "TXXX\0\0\0\5\0\0\3n\0v!"sv,
     "TXXX\0\0\1\xFF\xFEn\0\0\0\xFF\xFEv\0!\0"sv},
    {"LinkStays8Bit", 4, 0, "WXXX\0\0\0\6\0\0\3d\0a/b"sv, "WXXX\0\0\1\xFF\xFE\x64\0\0\0a/b"sv},
    {"PlainLinkHasNoEncoding", 4, 0, "WOAR\0\0\0\3\0\0\3/b"sv, "WOAR\0\0\3/b"sv},
    {"CommentKeepsItsLanguage", 4, 0, "COMM\0\0\0\7\0\0\3eng\0Hi"sv,
     "COMM\0\0\1eng\xFF\xFE\0\0\xFF\xFEH\0i\0"sv},
    {"LyricsToo", 4, 0, "USLT\0\0\0\7\0\0\3deud\0x"sv,
     "USLT\0\0\1deu\xFF\xFE\x64\0\0\0\xFF\xFEx\0"sv},
    {"SyncedLyricsKeepTheirTimes", 4, 0, "SYLT\0\0\0\x13\0\0\3eng\2\1d\0a\0\1\2\3\4\0\0\0\0\5"sv,
     "SYLT\0\0\1eng\2\1\xFF\xFE\x64\0\0\0\xFF\xFE\x61\0\0\0\1\2\3\4\xFF\xFE\0\0\0\0\0\5"sv},
    {"PictureKeepsItsImage", 4, 0, "APIC\0\0\0\x0F\0\0\3image/x\0\3d\0\3\xC3\xBC"sv,
     "APIC\0\0\1image/x\0\3\xFF\xFE\x64\0\0\0\3\xC3\xBC"sv},
    {"ObjectHasTwoTexts", 4, 0, "GEOB\0\0\0\x0A\0\0\3t\0f\0d\0\3\3\3"sv,
     "GEOB\0\0\1t\0\xFF\xFE\x66\0\0\0\xFF\xFE\x64\0\0\0\3\3\3"sv},
    {"TermsOfUse", 4, 0, "USER\0\0\0\5\0\0\3engx"sv, "USER\0\0\1eng\xFF\xFEx\0"sv},
    {"Ownership", 4, 0,
     "OWNE\0\0\0\x12\0\0\3EUR1\0"
     "20260102shop"sv,
     "OWNE\0\0\1EUR1\0"
     "20260102\xFF\xFEs\0h\0o\0p\0"sv},
    {"FrameWithoutTextStays", 4, 0, "PRIV\0\0\0\4\0\0\3a\0b"sv, "PRIV\0\0\3a\0b"sv},
    {"StatusBitsMove", 4, 0, "PRIV\0\0\0\1\x70\0x"sv, "PRIV\xE0\0x"sv},
    {"GroupStays", 4, 0, "TIT2\0\0\0\3\0\x40G\3a"sv, "TIT2\0\x20G\1\xFF\xFE\x61\0"sv},
    {"UnsynchronisationOfAFrameIsUndone", 4, 0, "PRIV\0\0\0\4\0\2\xFF\0\0b"sv, "PRIV\0\0\xFF\0b"sv},
    {"ItsLengthIsDropped", 4, 0, "PRIV\0\0\0\x08\0\3\0\0\0\3\xFF\0\0b"sv, "PRIV\0\0\xFF\0b"sv},
    {"LengthAloneIsDropped", 4, 0, "TIT2\0\0\0\6\0\1\0\0\0\2\0a"sv, "TIT2\0\0\0a"sv},
    {"CompressedFrameHasAPlainLength", 4, 0, "TIT2\0\0\0\7\0\x09\0\0\1\0xyz"sv,
     "TIT2\0\x80\0\0\0\x80xyz"sv},
    {"EncryptedBodyStays", 4, 0, "TIT2\0\0\0\3\0\4M\3a"sv, "TIT2\0\x40M\3a"sv},
    {"EncryptedFrameLosesItsLength", 4, 0, "TIT2\0\0\0\7\0\5M\0\0\0\1\3a"sv, "TIT2\0\x40M\3a"sv},
    {"PrefixesChangeTheirOrder", 4, 0, "TIT2\0\0\0\x08\0\x4DGM\0\0\0\5xy"sv,
     "TIT2\0\xE0\0\0\0\5MGxy"sv},
    {"ChapterWithAText", 4, 0,
     "CHAP\0\0\0\x1E\0\0c\0\0\0\0\0\0\0\0\1\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFFTIT2\0\0\0\2\0\0\3a"sv,
     "CHAP\0\0c\0\0\0\0\0\0\0\0\1\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFFTIT2\0\0\0\5\0\0\1\xFF\xFE\x61\0"sv},
    {"TableOfContentsWithAText", 4, 0, "CTOC\0\0\0\x14\0\0t\0\3\2a\0b\0TIT2\0\0\0\2\0\0\3a"sv,
     "CTOC\0\0t\0\3\2a\0b\0TIT2\0\0\0\5\0\0\1\xFF\xFE\x61\0"sv},
    {"BrokenChapterStays", 4, 0,
     "CHAP\0\0\0\x1E\0\0c\0\0\0\0\0\0\0\0\1\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFFTIT2\0\0\0\3\0\0\3a"sv,
     "CHAP\0\0c\0\0\0\0\0\0\0\0\1\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFFTIT2\0\0\0\3\0\0\3a"sv},
    {"Version2Text", 2, 0, "TT2\0\0\5\0Song"sv, "TIT2\0\0\0Song"sv},
    {"Version2UserText", 2, 0, "TXX\0\0\4\0n\0v"sv, "TXXX\0\0\0n\0v"sv},
    {"Version2Png", 2, 0, "PIC\0\0\7\0PNG\3\0x"sv, "APIC\0\0\0image/png\0\3\0x"sv},
    {"Version2Jpeg", 2, 0, "PIC\0\0\7\0JPG\3\0x"sv, "APIC\0\0\0image/jpeg\0\3\0x"sv},
    {"Version2LinkedPicture", 2, 0, "PIC\0\0\x0A\0-->\3\0a/bc"sv, "APIC\0\0\0-->\0\3\0a/bc"sv},
    {"Version2Link", 2, 0, "LNK\0\0\5TT2/x"sv, "LINK\0\0TIT2/x"sv},
    {"Version2Unsynchronised", 2, 0x80, "UFI\0\0\4a\0\xFF\0\0"sv, "UFID\0\0a\0\xFF\0"sv},
};

INSTANTIATE_TEST_SUITE_P(, ImportedFrames, testing::ValuesIn(kCases),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST(ImportedFrame, OfVersion2WithoutASuccessorIsLost) {
    EXPECT_TRUE(Imported(2, 0, Bytes("CRM\0\0\3a\0b"sv)).is_lost());
    EXPECT_TRUE(Imported(2, 0, Bytes("XYZ\0\0\3a\0b"sv)).is_lost());
}

TEST(ImportedFrame, CompressedWithoutALengthIsLost) {
    EXPECT_TRUE(Imported(4, 0, Bytes("TIT2\0\0\0\3\0\x08xyz"sv)).is_lost());
}

TEST(ImportedFrame, OfVersion3IsNotConverted) {
    EXPECT_FALSE(Imported(3, 0, Bytes("TIT2\0\0\0\5\0\0\0Song"sv)).is_converted());
    EXPECT_TRUE(Imported(4, 0, Bytes("TIT2\0\0\0\5\0\0\0Song"sv)).is_converted());
}

TEST(ImportedFrame, HeadIsTheContentWithoutPrefix) {
    EXPECT_EQ(Imported(4, 0, Bytes("PRIV\0\0\0\6\0\x41G\0\0\0\1x"sv)).head(), "x");
    EXPECT_EQ(Imported(3, 0, Bytes("PRIV\0\0\0\2\0\x20Gx"sv)).head(), "x");
    EXPECT_EQ(Imported(3, 0, Bytes("PRIV\0\0\0\2\0\x40Mx"sv)).head(), "");
    EXPECT_EQ(Imported(2, 0, Bytes("TT2\0\0\2\0a"sv)).head(), "\0a"sv);
}

}  // namespace
}  // namespace brindle::test
