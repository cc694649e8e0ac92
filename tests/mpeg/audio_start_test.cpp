// Where audio begins after what is known to be no audio.
#include "mpeg/audio_start.h"

#include <cstddef>
#include <optional>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "mpeg/header_formulas.h"
#include "support/bytes.h"
#include "support/frames.h"
#include "support/memory_files.h"
#include "util/file_window.h"

namespace brindle {
namespace {

using test::Bytes;
using test::Frame;
using test::HeaderBits;
using test::Mode;

using Position = std::optional<std::int64_t>;

const Frame kStereo;                                        // 417 bytes
const Frame kJoint = kStereo.with_mode(Mode::JointStereo);  // of the same kind
const Frame kMpeg2{.version = 2, .kbps = 64, .frequency = 22050};
const Frame kLayer2{.layer = 2};
const Frame k48000{.frequency = 48000};

// No byte of it is a sync.
Bytes junk(std::size_t count) {
    return test::repeated(count, 0x55);
}

Bytes free_format_header() {
    return HeaderBits{.bitrate = 0}.bytes();
}

std::int64_t size_of(const Bytes& bytes) {
    return static_cast<std::int64_t>(bytes.size());
}

class Content {
public:
    explicit Content(const Bytes& content) {
        files_.put(u"a.mp3", content);
        file_ = files_.open(u"a.mp3", OpenMode::Read);
        window_.emplace(*file_);
    }
    FileWindow& window() { return *window_; }

private:
    test::MemoryFiles files_;
    std::unique_ptr<BinaryFile> file_;
    std::optional<FileWindow> window_;
};

StreamKinds kind(const Frame& frame) {
    const FrameKind kind = *frame_kind_at(Content(frame.bytes()).window(), 0);
    return {kind, kind};
}

Position audio_in(const Bytes& content, std::optional<StreamKinds> accepted,
                  std::int64_t begin = 0) {
    return find_audio(Content(content).window(), {begin, size_of(content)}, accepted);
}

TEST(FindAudio, SingleHeaderOfTheAcceptedKindCounts) {
    EXPECT_EQ(audio_in(junk(100) + kJoint.bytes() + junk(50), kind(kStereo)), 100);
    EXPECT_EQ(audio_in(junk(100) + kStereo.with_kbps(320).bytes().first(4), kind(kStereo)), 100);
}

TEST(FindAudio, BothKindsOfAStreamCount) {
    const StreamKinds both{kind(kMpeg2).confirmed, kind(kStereo).confirmed};
    EXPECT_EQ(audio_in(junk(100) + kMpeg2.bytes() + junk(50), both), 100);
    EXPECT_EQ(audio_in(junk(100) + kStereo.bytes() + junk(50), both), 100);
    EXPECT_EQ(audio_in(junk(100) + kLayer2.bytes() + junk(50), both), std::nullopt);
}

TEST(FindAudio, SingleHeaderOfAnotherKindDoesNotCountBesideAnAcceptedStream) {
    for (const Frame& other : {kMpeg2, kLayer2, k48000}) {
        const Bytes content = junk(10) + other.bytes() + junk(20) + kStereo.bytes();
        EXPECT_EQ(audio_in(content, kind(kStereo)), size_of(content) - 417);
    }
}

TEST(FindAudio, ThreeHeadersOfAnotherKindInARowCount) {
    const Bytes rest = junk(20) + test::stream(kStereo, 4);
    EXPECT_EQ(audio_in(junk(10) + test::stream(kMpeg2, 3) + rest, kind(kStereo)), 10);
    const Bytes two = junk(10) + test::stream(kMpeg2, 2) + rest;
    EXPECT_EQ(audio_in(two, kind(kStereo)), size_of(two) - 4 * 417);
}

TEST(FindAudio, HeadersInARowMayDifferInRateAndMode) {
    const Bytes run = kMpeg2.bytes() + kMpeg2.with_kbps(32).with_mode(Mode::JointStereo).bytes() +
                      kMpeg2.padded().bytes();
    EXPECT_EQ(audio_in(junk(10) + run + kStereo.bytes(), kind(kStereo)), 10);
}

TEST(FindAudio, LastFrameOfARowNeedNotBeWhole) {
    const Bytes row = junk(10) + test::stream(kMpeg2, 2) + kMpeg2.bytes().first(4);
    EXPECT_EQ(audio_in(row, kind(kStereo)), 10);
    EXPECT_EQ(audio_in(row.first(row.size() - 1), kind(kStereo)), std::nullopt);
}

// Encoders pad a frame of Layer I by one slot of 4 bytes, the analyser counts two.
TEST(FindAudio, PaddedFramesOfLayer1FollowEachOtherByEitherLength) {
    const Frame layer1 = Frame{.layer = 1, .kbps = 384}.padded();
    EXPECT_EQ(layer1.length_as_read() - layer1.length(), 4U);
    EXPECT_EQ(audio_in(junk(10) + test::stream(layer1, 3), kind(kStereo)), 10);
    Frame as_read = layer1;
    as_read.bytes_in_stream = layer1.length_as_read();
    EXPECT_EQ(audio_in(junk(10) + test::stream(as_read, 3), kind(kStereo)), 10);
}

TEST(FindAudio, WithoutAnAcceptedStreamAnySingleHeaderCounts) {
    for (const Frame& frame : {kStereo, kMpeg2, kLayer2, k48000}) {
        EXPECT_EQ(audio_in(junk(33) + frame.bytes() + junk(9), std::nullopt), 33);
    }
    EXPECT_EQ(audio_in(junk(33) + free_format_header() + junk(9), std::nullopt), 33);
}

TEST(FindAudio, FreeFormatHeaderOfTheAcceptedKindCounts) {
    EXPECT_EQ(audio_in(junk(33) + free_format_header() + junk(9), kind(kStereo)), 33);
    EXPECT_EQ(audio_in(junk(33) + free_format_header() + junk(9), kind(kMpeg2)), std::nullopt);
}

TEST(FindAudio, HeadersWithReservedFieldsDoNotCount) {
    const HeaderBits reserved[] = {{.version = 1},   {.layer = 0},    {.bitrate = 15},
                                   {.frequency = 3}, {.emphasis = 2}, {.sync = 0x7FE}};
    for (const HeaderBits& bits : reserved) {
        EXPECT_EQ(audio_in(junk(5) + bits.bytes() + junk(5), std::nullopt), std::nullopt);
    }
}

TEST(FindAudio, BeginsAtTheGivenPosition) {
    const Bytes content = test::stream(kStereo, 3);
    EXPECT_EQ(audio_in(content, kind(kStereo), 1), 417);
    EXPECT_EQ(audio_in(content, kind(kStereo), 417), 417);
}

TEST(FindAudio, EndsAtTheGivenPosition) {
    Content content(junk(50) + kStereo.bytes());
    EXPECT_EQ(find_audio(content.window(), {0, 50}, kind(kStereo)), std::nullopt);
    EXPECT_EQ(find_audio(content.window(), {0, 51}, kind(kStereo)), 50);
}

TEST(FindAudio, FilesWithoutAnyHeaderHaveNone) {
    EXPECT_EQ(audio_in(Bytes(), std::nullopt), std::nullopt);
    EXPECT_EQ(audio_in(junk(3), std::nullopt), std::nullopt);
    EXPECT_EQ(audio_in(test::repeated(9000, 0xFF), std::nullopt), std::nullopt);
}

TEST(FindAudio, IsFoundAcrossTheBlocksOfALongFile) {
    const std::size_t far = 3 * FileWindow::kBlock - 2;
    EXPECT_EQ(audio_in(junk(far) + kStereo.bytes(), kind(kStereo)), static_cast<std::int64_t>(far));
}

TEST(FrameEndsAt, TellsWhetherAFrameOfTheNextOnesKindEndsThere) {
    const Bytes frame = kStereo.bytes();
    const Bytes next = kJoint.bytes();
    struct Row {
        const char* name;
        Bytes before;
        Bytes after;
        bool expected;
    };
    const Row rows[] = {
        {"a frame right before", junk(30) + frame, next, true},
        {"a padded one", junk(30) + kStereo.padded().bytes(), next, true},
        {"one byte between", junk(30) + frame + junk(1), next, false},
        {"one byte too few", junk(30) + frame.first(416), next, false},
        {"another kind", junk(30) + kMpeg2.bytes(), next, false},
        {"none", junk(600), next, false},
        {"any kind before what is no header", junk(30) + kMpeg2.bytes(), "TAG", true},
        {"any kind before the end", junk(30) + kMpeg2.bytes(), "", true},
        {"free format that continues", junk(30) + free_format_header() + junk(99),
         free_format_header() + junk(99) + free_format_header(), true},
        {"padded free format", junk(30) + free_format_header() + junk(99),
         free_format_header() + junk(98) + free_format_header(), true},
        {"free format that does not go on so", junk(30) + free_format_header() + junk(99),
         free_format_header() + junk(50) + free_format_header(), false},
        {"free format before a rate", junk(30) + free_format_header() + junk(99), next, false},
        {"free format before headers with a rate at its distance",
         junk(30) + free_format_header() + junk(99), frame.first(4) + junk(99) + frame, false},
    };
    for (const Row& row : rows) {
        Content content(row.before + row.after);
        EXPECT_EQ(frame_ends_at(content.window(), 0, size_of(row.before)), row.expected)
            << row.name;
    }
}

TEST(FrameEndsAt, LooksBackOnlyToTheGivenPosition) {
    Content content(junk(30) + kStereo.bytes() + kStereo.bytes());
    EXPECT_TRUE(frame_ends_at(content.window(), 30, 30 + 417));
    EXPECT_FALSE(frame_ends_at(content.window(), 31, 30 + 417));
}

TEST(FrameEndsAt, SeesTheLongestFrame) {
    // 144 * 160,000 / 8,000 and a padding byte: 2,881 bytes, the longest frame there is.
    const Frame longest{.version = 25, .layer = 2, .kbps = 160, .frequency = 8000, .padding = true};
    ASSERT_EQ(longest.length(), 2881U);
    Content content(junk(30) + longest.bytes() + longest.bytes());
    EXPECT_TRUE(frame_ends_at(content.window(), 0, 30 + 2881));
}

// --- the same facts, put down a second time without any care for speed ---

class SlowSearch {
public:
    explicit SlowSearch(const Bytes& content) : content_(content) {}

    [[nodiscard]] Position find(Position accepted) const {
        for (std::int64_t position = 0; position < size_of(content_); ++position) {
            if (!is_header(position)) {
                continue;
            }
            if (!accepted || kind(position) == kind(*accepted) || is_run(position, 3)) {
                return position;
            }
        }
        return std::nullopt;
    }

private:
    [[nodiscard]] unsigned byte(std::int64_t position) const {
        return position < size_of(content_) ? content_[static_cast<std::size_t>(position)] : 0U;
    }
    [[nodiscard]] unsigned version(std::int64_t p) const { return byte(p + 1) >> 3U & 3U; }
    [[nodiscard]] unsigned layer(std::int64_t p) const { return byte(p + 1) >> 1U & 3U; }
    [[nodiscard]] unsigned rate(std::int64_t p) const { return byte(p + 2) >> 4U; }
    [[nodiscard]] unsigned frequency(std::int64_t p) const { return byte(p + 2) >> 2U & 3U; }
    [[nodiscard]] unsigned kind(std::int64_t p) const {
        return version(p) << 8U | layer(p) << 4U | frequency(p);
    }
    [[nodiscard]] bool is_header(std::int64_t p) const {
        return p + 4 <= size_of(content_) && byte(p) == 255 && byte(p + 1) >= 224 &&
               version(p) != 1 && layer(p) != 0 && rate(p) != 15 && frequency(p) != 3 &&
               (byte(p + 3) & 3U) != 2;
    }
    // 0 for free format.
    [[nodiscard]] std::int64_t length(std::int64_t p) const {
        return test::meaning_of(byte(p) << 24U | byte(p + 1) << 16U | byte(p + 2) << 8U |
                                byte(p + 3))
            .length;
    }
    [[nodiscard]] bool is_run(std::int64_t p, int headers) const {
        const std::int64_t next = p + length(p);
        return is_header(p) && next != p &&
               (headers == 1 || (kind(next) == kind(p) && is_run(next, headers - 1)));
    }

    const Bytes& content_;
};

RC_GTEST_PROP(FindAudio, IsTheOneThatASlowSearchFinds, ()) {
    const std::vector<Frame> kinds{kStereo,
                                   kJoint,
                                   kStereo.with_kbps(32),
                                   kStereo.with_kbps(40).padded(),
                                   kMpeg2,
                                   Frame{.layer = 2, .kbps = 32}};
    Bytes content = junk(*rc::gen::inRange<std::size_t>(0, 20));
    std::vector<std::int64_t> frames;
    for (auto pieces = *rc::gen::inRange<std::size_t>(1, 14); pieces > 0; --pieces) {
        const Frame frame = *rc::gen::elementOf(kinds);
        const Bytes piece = *rc::gen::weightedOneOf<Bytes>(
            {{6, rc::gen::just(frame.bytes())},
             {1, rc::gen::just(frame.bytes().first(frame.length() - 1))},
             {1, rc::gen::just(frame.bytes().first(9))},
             {1, rc::gen::just(free_format_header())},
             {1, rc::gen::map(rc::gen::inRange<std::size_t>(1, 20), junk)},
             {1, rc::gen::map(rc::gen::inRange<std::size_t>(1, 7),
                              [](std::size_t count) { return test::repeated(count, 0xFF); })}});
        if (Content(piece).window().length() >= 4 && frame_kind_at(Content(piece).window(), 0)) {
            frames.push_back(size_of(content));
        }
        content += piece;
    }
    Position accepted;
    if (!frames.empty() && *rc::gen::arbitrary<bool>()) {
        accepted = *rc::gen::elementOf(frames);
    }
    std::optional<StreamKinds> accepted_kind;
    if (accepted) {
        const FrameKind kind = *frame_kind_at(Content(content).window(), *accepted);
        accepted_kind = StreamKinds{kind, kind};
    }
    RC_ASSERT(audio_in(content, accepted_kind) == SlowSearch(content).find(accepted));
}

}  // namespace
}  // namespace brindle
