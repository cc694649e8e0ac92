// Where audio begins: what may be cut off in front of it is exactly what these facts say.
#include <memory>
#include <optional>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "id3v2/audio_start.h"
#include "mpeg/frame_header.h"
#include "support/bytes.h"
#include "support/frames.h"
#include "support/memory_files.h"
#include "util/file_window.h"

namespace brindle {
namespace {

using test::Bytes;
using test::Frame;
using test::Mode;

using Start = std::optional<std::int64_t>;

const Frame kStereo;                                        // 417 bytes
const Frame kJoint = kStereo.with_mode(Mode::JointStereo);  // 417 bytes
const Frame kMpeg2{.version = 2, .kbps = 64, .frequency = 22050};
// No byte of it is a sync.
Bytes junk(std::size_t count) {
    return test::repeated(count, 0x55);
}

std::int64_t offset(std::size_t bytes) {
    return static_cast<std::int64_t>(bytes);
}

Start audio_start(const Bytes& content, Start accepted, const ClaimedArea& claimed = {}) {
    test::MemoryFiles files;
    files.put(u"a.mp3", content);
    const auto file = files.open(u"a.mp3", OpenMode::Read);
    FileWindow window(*file);
    return find_audio_start(window, accepted, claimed);
}

TEST(AudioStart, IsTheAcceptedFrameBehindJunk) {
    EXPECT_EQ(audio_start(junk(100) + test::stream(kStereo, 4), 100), 100);
}

TEST(AudioStart, IsTheFirstFrameOfAChainThatLeadsToTheAcceptedOne) {
    const Bytes content = junk(100) + test::stream(kStereo, 5) + test::stream(kJoint, 4);
    EXPECT_EQ(audio_start(content, 100 + 5 * 417), 100);
}

TEST(AudioStart, ChainMayBeOfOneFrameOfAnyKind) {
    const Bytes content = junk(100) + kMpeg2.bytes() + test::stream(kStereo, 4);
    EXPECT_EQ(audio_start(content, 100 + offset(kMpeg2.length())), 100);
}

TEST(AudioStart, ChainThatEndsOneByteBesideTheAcceptedFrameDoesNotCount) {
    for (const Bytes& gap : {junk(1), Bytes()}) {
        const Bytes cut = gap.empty() ? kStereo.bytes().first(416) : kStereo.bytes() + gap;
        const Bytes content = junk(100) + cut + test::stream(kStereo, 4);
        const std::int64_t accepted = 100 + offset(cut.size());
        EXPECT_EQ(audio_start(content, accepted), accepted);
    }
}

TEST(AudioStart, ChainIsFollowedOverAnyNumberOfFrames) {
    const Bytes content = test::stream(kStereo, 300) + test::stream(kJoint, 4);
    EXPECT_EQ(audio_start(content, 300 * 417), 0);
}

TEST(AudioStart, ChainOfTheLongestFramesIsFollowed) {
    // 144 * 160,000 / 8,000 and a padding byte: 2,881 bytes, the longest frame there is.
    const Frame longest{.version = 25, .layer = 2, .kbps = 160, .frequency = 8000, .padding = true};
    ASSERT_EQ(longest.length(), 2881U);
    const Bytes content = junk(7) + test::stream(longest, 5) + test::stream(kStereo, 4);
    EXPECT_EQ(audio_start(content, 7 + 5 * 2881), 7);
}

TEST(AudioStart, ChainCountsFromInsideTheClaimedArea) {
    const Bytes content = junk(100) + test::stream(kStereo, 5) + test::stream(kJoint, 4);
    EXPECT_EQ(audio_start(content, 100 + 5 * 417, {0, 110}), 100);
    EXPECT_EQ(audio_start(content, 100 + 5 * 417, {0, 100 + 5 * 417}), 100);
}

TEST(AudioStart, ThreeFramesInARowCountThoughTheyDoNotLeadOn) {
    const Bytes content = junk(50) + test::stream(kStereo, 3) + junk(30) + test::stream(kJoint, 4);
    EXPECT_EQ(audio_start(content, 50 + 3 * 417 + 30), 50);
}

TEST(AudioStart, ThreeFramesInARowMayDifferInBitrateAndMode) {
    const Bytes run = kStereo.bytes() + kJoint.with_kbps(64).bytes() + kStereo.padded().bytes();
    const Bytes content = junk(50) + run + junk(30) + test::stream(kStereo, 4);
    EXPECT_EQ(audio_start(content, offset(50 + run.size() + 30)), 50);
}

TEST(AudioStart, TwoFramesInARowDoNotCount) {
    const Bytes content = junk(50) + test::stream(kStereo, 2) + junk(30) + test::stream(kJoint, 4);
    const std::int64_t accepted = 50 + 2 * 417 + 30;
    EXPECT_EQ(audio_start(content, accepted), accepted);
}

TEST(AudioStart, ThreeFramesOfDifferentKindsDoNotCount) {
    const Frame other_version{.version = 2, .kbps = 128, .frequency = 22050};
    const Frame other_layer{.layer = 2};
    const Frame other_frequency{.frequency = 48000};
    for (const Frame& other : {other_version, other_layer, other_frequency}) {
        const Bytes run = kStereo.bytes() + kStereo.bytes() + other.bytes();
        const Bytes content = junk(50) + run + junk(30) + test::stream(kStereo, 4);
        const auto accepted = offset(50 + run.size() + 30);
        EXPECT_EQ(audio_start(content, accepted), accepted);
    }
}

TEST(AudioStart, ThreeFramesInFrontOfTheClaimedAreaCount) {
    const Bytes content = test::stream(kStereo, 3) + junk(300) + test::stream(kJoint, 4);
    const std::int64_t tag = 3 * 417;
    EXPECT_EQ(audio_start(content, tag + 300, {tag, tag + 300}), 0);
}

TEST(AudioStart, ThreeFramesInsideTheClaimedAreaDoNotCount) {
    const Bytes content = junk(50) + test::stream(kStereo, 3) + junk(30) + test::stream(kJoint, 4);
    const std::int64_t accepted = 50 + 3 * 417 + 30;
    EXPECT_EQ(audio_start(content, accepted, {0, accepted}), accepted);
    EXPECT_EQ(audio_start(content, accepted, {0, 51}), accepted);
    EXPECT_EQ(audio_start(content, accepted, {0, 50}), 50);
}

TEST(AudioStart, OneFrameRightBehindTheClaimedAreaCounts) {
    const Bytes content = junk(60) + kStereo.bytes() + junk(30) + test::stream(kJoint, 4);
    const std::int64_t accepted = 60 + 417 + 30;
    EXPECT_EQ(audio_start(content, accepted, {0, 60}), 60);
    EXPECT_EQ(audio_start(content, accepted, {0, 59}), accepted);
    EXPECT_EQ(audio_start(content, accepted, {0, 61}), accepted);
}

TEST(AudioStart, OneFrameAtTheStartOfAFileWithoutATagCounts) {
    const Bytes content = kStereo.bytes() + junk(30) + test::stream(kJoint, 4);
    EXPECT_EQ(audio_start(content, 417 + 30), 0);
    EXPECT_EQ(audio_start(junk(1) + content, 1 + 417 + 30), 1 + 417 + 30);
}

TEST(AudioStart, EarliestOfAllThatCountsIsTaken) {
    const Bytes content = test::stream(kStereo, 3) + junk(20) + kStereo.bytes() + junk(20) +
                          test::stream(kStereo, 2) + test::stream(kJoint, 4);
    const std::int64_t area_end = 3 * 417 + 20;
    EXPECT_EQ(audio_start(content, area_end + 417 + 20 + 2 * 417, {3 * 417, area_end}), 0);
    EXPECT_EQ(audio_start(content, area_end + 417 + 20 + 2 * 417, {0, area_end}), area_end);
    EXPECT_EQ(audio_start(content, area_end + 417 + 20 + 2 * 417, {0, area_end + 1}),
              area_end + 417 + 20);
}

TEST(AudioStart, WithoutAnAcceptedFrameIsTheFirstRunOfThree) {
    EXPECT_EQ(audio_start(junk(50) + test::stream(kStereo, 3), std::nullopt), 50);
    EXPECT_EQ(audio_start(junk(50) + test::stream(kStereo, 2), std::nullopt), std::nullopt);
}

TEST(AudioStart, WithoutAnAcceptedFrameTheClaimedAreaCountsToo) {
    EXPECT_EQ(audio_start(junk(50) + test::stream(kStereo, 3), std::nullopt, {0, 2000}), 50);
}

TEST(AudioStart, LastFrameOfARunNeedNotBeWhole) {
    const Bytes content = junk(50) + test::stream(kStereo, 2) + kStereo.bytes().first(4);
    EXPECT_EQ(audio_start(content, std::nullopt), 50);
    EXPECT_EQ(audio_start(content.first(content.size() - 1), std::nullopt), std::nullopt);
}

TEST(AudioStart, RunThatStandsForTheAcceptedFrameIsLedToByAChainToo) {
    const Bytes content = junk(50) + kMpeg2.bytes() + test::stream(kStereo, 3);
    EXPECT_EQ(audio_start(content, std::nullopt), 50);
}

TEST(AudioStart, FilesWithoutAnyFrameHaveNone) {
    EXPECT_EQ(audio_start(Bytes(), std::nullopt), std::nullopt);
    EXPECT_EQ(audio_start(junk(3), std::nullopt), std::nullopt);
    EXPECT_EQ(audio_start(test::repeated(9000, 0xFF), std::nullopt), std::nullopt);
}

// --- the same facts, put down a second time without any care for speed ---

struct SlowSearch {
    const Bytes& content;
    std::int64_t length = offset(content.size());

    [[nodiscard]] std::optional<FrameHeader> header(std::int64_t position) const {
        if (position < 0 || position + 4 > length) {
            return std::nullopt;
        }
        return parse_frame_header(header_bits(content.data() + position));
    }
    [[nodiscard]] bool leads(std::int64_t position, std::int64_t target) const {
        while (position < target) {
            const auto found = header(position);
            if (!found) {
                return false;
            }
            position += found->length;
        }
        return position == target;
    }
    [[nodiscard]] bool run(std::int64_t position) const {
        std::vector<std::uint32_t> kinds;
        for (int frame = 0; frame < 3; ++frame) {
            const auto found = header(position);
            if (!found) {
                return false;
            }
            // Version, layer and frequency by their bits in the header.
            kinds.push_back(found->bits & 0x001E0C00U);
            position += found->length;
        }
        return kinds[0] == kinds[1] && kinds[1] == kinds[2];
    }
    [[nodiscard]] Start start(Start accepted, const ClaimedArea& claimed) const {
        for (std::int64_t position = 0; !accepted && position < length; ++position) {
            if (run(position)) {
                accepted = position;
            }
        }
        if (!accepted) {
            return std::nullopt;
        }
        for (std::int64_t position = 0; position < *accepted; ++position) {
            const bool claims = position >= claimed.begin && position < claimed.end;
            if (leads(position, *accepted) || (!claims && run(position)) ||
                (position == claimed.end && header(position))) {
                return position;
            }
        }
        return accepted;
    }
};

RC_GTEST_PROP(AudioStart, IsTheOneThatASlowSearchFinds, ()) {
    const std::vector<Frame> kinds{kStereo,
                                   kJoint,
                                   kStereo.with_kbps(32),
                                   kStereo.with_kbps(40).padded(),
                                   kMpeg2,
                                   Frame{.layer = 2, .kbps = 32},
                                   Frame{.layer = 1, .kbps = 32}};
    Bytes content;
    std::vector<std::int64_t> places{0};
    for (auto pieces = *rc::gen::inRange<std::size_t>(1, 14); pieces > 0; --pieces) {
        const Frame frame = *rc::gen::elementOf(kinds);
        Bytes piece = *rc::gen::weightedOneOf<Bytes>(
            {{6, rc::gen::just(frame.bytes())},
             {1, rc::gen::just(frame.bytes().first(frame.length() - 1))},
             {1, rc::gen::just(frame.bytes().first(9))},
             {1, rc::gen::map(rc::gen::inRange<std::size_t>(1, 20), junk)},
             {1, rc::gen::map(rc::gen::inRange<std::size_t>(1, 7),
                              [](std::size_t count) { return test::repeated(count, 0xFF); })}});
        content += piece;
        places.push_back(offset(content.size()));
    }
    const std::int64_t some = *rc::gen::elementOf(places) + *rc::gen::inRange(-3, 4);
    const std::int64_t other = *rc::gen::elementOf(places) + *rc::gen::inRange(-3, 4);
    ClaimedArea claimed;
    if (*rc::gen::arbitrary<bool>()) {
        claimed = {std::max<std::int64_t>(0, std::min(some, other)),
                   std::max<std::int64_t>(0, std::max(some, other))};
    }
    const SlowSearch slow{content};
    Start accepted;
    const std::int64_t place = *rc::gen::elementOf(places);
    if (slow.header(place)) {
        accepted = place;
    }
    RC_ASSERT(audio_start(content, accepted, claimed) == slow.start(accepted, claimed));
}

}  // namespace
}  // namespace brindle
