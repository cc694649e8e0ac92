#include <optional>

#include <gtest/gtest.h>

#include "id3v2/tag_area.h"
#include "support/bytes.h"
#include "support/frames.h"
#include "support/memory_files.h"
#include "support/tags.h"
#include "util/file_window.h"

namespace brindle {
namespace {

using test::Bytes;
using test::Tag;

const test::Frame kFrame;  // 417 bytes
const Bytes kAudio = test::stream(kFrame, 20);

Bytes junk(std::size_t count) {
    return test::repeated(count, 0x55);
}

TagArea area_of(const Bytes& content, std::optional<std::int64_t> accepted) {
    test::MemoryFiles files;
    files.put(u"a.mp3", content);
    const auto file = files.open(u"a.mp3", OpenMode::Read);
    FileWindow window(*file);
    std::optional<AcceptedFrame> frame;
    if (accepted) {
        const FrameKind kind = frame_kind_at(window, *accepted).value();
        frame = AcceptedFrame{*accepted, {kind, kind}};
    }
    return find_tag_area(window, frame);
}

TEST(TagArea, OfAFileWithoutATagIsNoneAndAudioStaysFromItsFirstFrame) {
    const TagArea area = area_of(junk(30) + kAudio, 30);
    EXPECT_FALSE(area.position);
    EXPECT_FALSE(area.fits(1));
    EXPECT_EQ(area.kept_from, 30);
    EXPECT_EQ(area.audio, 30);
}

TEST(TagArea, OfAFileWithoutTagAndAudioIsNoneAndAllStays) {
    const TagArea area = area_of(junk(9000), std::nullopt);
    EXPECT_FALSE(area.position);
    EXPECT_EQ(area.kept_from, 0);
    EXPECT_FALSE(area.audio);
}

TEST(TagArea, IsTheOldTagWhereAudioFollowsIt) {
    const TagArea area = area_of(Tag().padded_to(500).bytes() + kAudio, 500);
    EXPECT_EQ(area.position, 0);
    EXPECT_EQ(area.length, 500);
    EXPECT_EQ(area.kept_from, 500);
}

TEST(TagArea, FitsOnlyWhatLeavesAByteOfIt) {
    const TagArea area = area_of(Tag().padded_to(500).bytes() + kAudio, 500);
    EXPECT_TRUE(area.fits(499));
    EXPECT_FALSE(area.fits(500));
    EXPECT_FALSE(area.fits(501));
}

TEST(TagArea, ReachesToTheFirstFrameOverJunkThatTheTagDoesNotClaim) {
    const TagArea area = area_of(Tag().padded_to(500).bytes() + junk(70) + kAudio, 570);
    EXPECT_EQ(area.length, 570);
    EXPECT_EQ(area.kept_from, 570);
}

TEST(TagArea, EndsAtTheFirstFrameWhereTheTagClaimsMore) {
    const TagArea area = area_of(Tag().padding(490).size(497).bytes() + kAudio, 500);
    EXPECT_EQ(area.length, 500);
    EXPECT_EQ(area.kept_from, 500);
}

TEST(TagArea, IsReckonedFromTheTagsOwnStart) {
    const TagArea area = area_of(junk(33) + Tag().padded_to(500).bytes() + kAudio, 533);
    EXPECT_EQ(area.position, 33);
    EXPECT_EQ(area.length, 500);
    EXPECT_EQ(area.kept_from, 533);
}

TEST(TagArea, WithoutAudioIsWhatTheTagClaims) {
    const TagArea area = area_of(Tag().padded_to(500).bytes() + junk(9000), std::nullopt);
    EXPECT_EQ(area.position, 0);
    EXPECT_EQ(area.length, 500);
    EXPECT_EQ(area.kept_from, 500);
}

TEST(TagArea, WithoutAudioIsTheHeaderAloneWhereTheTagClaimsMoreThanTheFileHolds) {
    const Bytes content = Tag().padding(200).size(100'000).bytes() + junk(9000);
    const TagArea area = area_of(content, std::nullopt);
    EXPECT_EQ(area.length, 10);
    EXPECT_EQ(area.kept_from, 10);
}

TEST(TagArea, SizeThatIsExactlyTheFilesLengthIsStillAccepted) {
    const Bytes content = Tag().padding(200).size(9210).bytes() + junk(9000);
    ASSERT_EQ(content.size(), 9210U);
    EXPECT_EQ(area_of(content, std::nullopt).length, 9220);
    EXPECT_EQ(area_of(content + junk(1), std::nullopt).length, 9220);
    EXPECT_EQ(area_of(content.first(9209), std::nullopt).length, 10);
}

TEST(TagArea, WithoutAudioAndAfterOtherBytesLosesNothingWhenItMustGrow) {
    const TagArea area =
        area_of(junk(33) + Tag().padded_to(500).bytes() + junk(9000), std::nullopt);
    EXPECT_EQ(area.position, 33);
    EXPECT_EQ(area.length, 500);
    EXPECT_EQ(area.kept_from, 0);
}

TEST(TagArea, TagInsideTheAudioIsAudio) {
    // Frames of MPEG-2 start with FF F3, so the search for a tag continues past them.
    const test::Frame mpeg2{.version = 2, .kbps = 64, .frequency = 22050};
    Bytes content = junk(20) + test::stream(mpeg2, 40);
    const Bytes tag = Tag().padding(90).bytes();
    std::copy(tag.begin(), tag.end(), content.begin() + 20 + 208 + 50);
    const TagArea area = area_of(content, 20);
    EXPECT_FALSE(area.position);
    EXPECT_EQ(area.kept_from, 20);
}

}  // namespace
}  // namespace brindle
