// How long files really play, counted by hand. Frames are MPEG-1 Layer III at 44,100 Hz unless a
// test says otherwise: 1,152 samples each, 417 bytes at 128 kbit/s (144,000 * 128 / 44,100, cut).
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/error.h>
#include <brindle/frame_walk.h>

#include "mpeg/frame_walker.h"
#include "support/frames.h"
#include "support/id3v1.h"
#include "support/memory_environment.h"
#include "support/raised_error.h"
#include "support/shrunk_file.h"
#include "support/tags.h"

namespace brindle::test {
namespace {

const String kName = u"song.mp3";
constexpr std::size_t kFrame = 417;

struct Visited {
    std::int64_t offset;
    Bytes bytes;
    bool is_header_frame;
    bool follows_gap;
};

struct Visits {
    FrameWalk walk;
    std::vector<Visited> frames;
};

Visits visit(const Bytes& file, std::int64_t first_frame = 0) {
    MemoryEnvironment world;
    world.files.put(kName, file);
    const auto opened = world.files.open(kName, OpenMode::Read);
    FileWindow window(*opened);
    Visits visits;
    const auto keep = [&](const WalkedFrame& frame) {
        visits.frames.push_back({frame.offset,
                                 std::vector<std::uint8_t>(frame.bytes.begin(), frame.bytes.end()),
                                 frame.is_header_frame, frame.follows_gap});
    };
    visits.walk = FrameWalker(window, window.length(), keep).run(first_frame);
    return visits;
}

// A visitor receives what is counted: each frame at its offset, one after the other but for the
// gaps.
void check_visits(const Bytes& file, const FrameWalk& plain, const Visits& visits) {
    EXPECT_EQ(visits.walk, plain);
    std::int64_t sounding = 0;
    std::int64_t gaps = 0;
    std::int64_t end = plain.first_frame;
    for (const Visited& frame : visits.frames) {
        const auto size = static_cast<std::int64_t>(frame.bytes.size());
        EXPECT_EQ(frame.bytes,
                  file.part(static_cast<std::size_t>(frame.offset), frame.bytes.size()));
        EXPECT_EQ(frame.is_header_frame,
                  plain.has_header_frame && frame.offset == plain.first_frame);
        EXPECT_EQ(frame.follows_gap, frame.offset != end);
        sounding += frame.is_header_frame ? 0 : 1;
        gaps += frame.follows_gap ? 1 : 0;
        end = frame.offset + size;
    }
    EXPECT_EQ(sounding, plain.frames);
    EXPECT_EQ(gaps, plain.gaps);
    EXPECT_EQ(end, plain.end);
}

FrameWalk walk(const Bytes& file, std::int64_t first_frame = 0) {
    MemoryEnvironment world;
    world.files.put(kName, file);
    const auto opened = world.files.open(kName, OpenMode::Read);
    FileWindow window(*opened);
    const FrameWalk plain = FrameWalker(window, window.length()).run(first_frame);
    check_visits(file, plain, visit(file, first_frame));
    return plain;
}

struct Opened {
    explicit Opened(const Bytes& file) {
        world.files.put(kName, file);
        header.FileName(kName);
    }
    [[nodiscard]] FrameWalk walk() const { return walk_frames(header); }

    MemoryEnvironment world;
    cMPEGHeader header{world.environment};
};

TEST(FrameWalk, CountsEveryFrameToTheEnd) {
    const FrameWalk found = walk(stream(Frame{}, 120));
    EXPECT_EQ(found.frames, 120);
    EXPECT_EQ(found.samples_per_frame, 1152);
    EXPECT_EQ(found.frequency, 44100);
    EXPECT_EQ(found.milliseconds, 3135);  // 138,240 / 44.1 = 3,134.69
    EXPECT_EQ(found.first_frame, 0);
    EXPECT_EQ(found.end, 120 * 417);
    EXPECT_EQ(found.gaps, 0);
    EXPECT_EQ(found.bytes_after, 0);
    EXPECT_FALSE(found.has_header_frame);
    EXPECT_FALSE(found.last_frame_is_cut);
}

TEST(FrameWalk, VisitorSeesHeaderFrameFramesAndGaps) {
    const Bytes song = xing_frame(Frame{}, Xing{}) + stream(Frame{}, 3);
    const auto frames = visit(song + zeros(20) + stream(Frame{}, 2)).frames;
    ASSERT_EQ(frames.size(), 6U);
    constexpr std::int64_t kOffsets[] = {0, 417, 834, 1251, 1688, 2105};
    for (std::size_t number = 0; number < frames.size(); ++number) {
        EXPECT_EQ(frames[number].offset, kOffsets[number]);
        EXPECT_EQ(frames[number].bytes.size(), 417U);
        EXPECT_EQ(frames[number].is_header_frame, number == 0);
        EXPECT_EQ(frames[number].follows_gap, number == 4);
    }
}

TEST(FrameWalk, VisitorSeesWholeFramesThatCrossTheBlocksOfReading) {
    // 320 kbit/s: frames of 1,044 bytes, and blocks of 8 and 96 KiB.
    const Bytes file = stream(Frame{.kbps = 320}, 1'000);
    EXPECT_EQ(visit(file).frames.size(), 1'000U);
    EXPECT_EQ(walk(file).frames, 1'000);
}

struct Kind {
    const char* name;
    Frame frame;
    std::int32_t samples;
    std::int64_t milliseconds;  // of 100 frames
};

void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.name;
}

const Kind kKinds[] = {
    {"Mpeg1Layer3", {.kbps = 320, .frequency = 48000}, 1152, 2400},
    {"Mpeg1Layer2", {.layer = 2, .kbps = 192, .frequency = 32000}, 1152, 3600},
    {"Mpeg1Layer1", {.layer = 1, .kbps = 384, .frequency = 48000}, 384, 800},
    {"Mpeg2Layer3", {.version = 2, .kbps = 64, .frequency = 24000}, 576, 2400},
    {"Mpeg2Layer2", {.version = 2, .layer = 2, .kbps = 64, .frequency = 16000}, 1152, 7200},
    {"Mpeg25Layer3", {.version = 25, .kbps = 8, .frequency = 8000}, 576, 7200},
};

class FrameWalkOfKind : public ::testing::TestWithParam<Kind> {};

TEST_P(FrameWalkOfKind, PlaysItsSamplesAtItsFrequency) {
    const FrameWalk found = walk(stream(GetParam().frame, 100));
    EXPECT_EQ(found.frames, 100);
    EXPECT_EQ(found.samples_per_frame, GetParam().samples);
    EXPECT_EQ(found.frequency, GetParam().frame.frequency);
    EXPECT_EQ(found.milliseconds, GetParam().milliseconds);
}

INSTANTIATE_TEST_SUITE_P(All, FrameWalkOfKind, ::testing::ValuesIn(kKinds),
                         [](const auto& kind) { return kind.param.name; });

// A frame plays 1,280/49 ms, so a half never comes about.
TEST(FrameWalk, LengthIsTheNearestMillisecond) {
    EXPECT_EQ(walk(stream(Frame{}, 2)).milliseconds, 52);   // 52.24
    EXPECT_EQ(walk(stream(Frame{}, 3)).milliseconds, 78);   // 78.37
    EXPECT_EQ(walk(stream(Frame{}, 5)).milliseconds, 131);  // 130.61
}

// --- frames without sound

struct HeaderFrame {
    const char* name;
    const char* letters;
    std::size_t offset;
    bool is_header;
};

void PrintTo(const HeaderFrame& frame, std::ostream* out) {
    *out << frame.name;
}

const HeaderFrame kHeaderFrames[] = {
    {"XingAfterStereo", "Xing", 36, true},
    {"XingAfterMono", "Xing", 21, true},
    {"XingOfMpeg2Mono", "Xing", 13, true},
    {"AnyCase", "xINg", 36, true},
    {"InfoOfAConstantRate", "Info", 36, true},
    {"InfoAfterMono", "Info", 21, true},
    {"Vbri", "VBRI", 36, true},
    {"VbriElsewhere", "VBRI", 21, false},
    {"XingElsewhere", "Xing", 37, false},
    {"OtherLetters", "Zing", 36, false},
};

class FrameWalkOfHeaderFrame : public ::testing::TestWithParam<HeaderFrame> {};

TEST_P(FrameWalkOfHeaderFrame, IsNotHeard) {
    // Neither count is announced, so the library itself makes nothing of it.
    const Xing header{.flags = 0, .letters = GetParam().letters, .offset = GetParam().offset};
    const FrameWalk found = walk(xing_frame(Frame{}, header) + stream(Frame{}, 49));
    EXPECT_EQ(found.has_header_frame, GetParam().is_header);
    EXPECT_EQ(found.frames, GetParam().is_header ? 49 : 50);
    EXPECT_EQ(found.milliseconds, GetParam().is_header ? 1280 : 1306);  // 1,280.00, 1,306.12
    EXPECT_EQ(found.first_frame, 0);
    EXPECT_EQ(found.end, 50 * 417);
}

INSTANTIATE_TEST_SUITE_P(All, FrameWalkOfHeaderFrame, ::testing::ValuesIn(kHeaderFrames),
                         [](const auto& frame) { return frame.param.name; });

TEST(FrameWalk, HeaderFrameLaterInTheStreamIsAFrameLikeAnyOther) {
    const FrameWalk found =
        walk(stream(Frame{}, 10) + xing_frame(Frame{}, Xing{}) + stream(Frame{}, 10));
    EXPECT_FALSE(found.has_header_frame);
    EXPECT_EQ(found.frames, 21);
}

// --- what may change from frame to frame

TEST(FrameWalk, ContinuesWhenBitRateModeFlagsAndPaddingChange) {
    const Frame other{
        .kbps = 64, .mode = Mode::JointStereo, .copyright = true, .original = true, .emphasis = 1};
    const FrameWalk found = walk(stream(Frame{}, 10) + stream(other, 10) +
                                 stream(Frame{}.padded(), 10) + stream(Frame{.crc = true}, 10));
    EXPECT_EQ(found.frames, 40);
    EXPECT_EQ(found.gaps, 0);
    EXPECT_EQ(found.bytes_after, 0);
}

TEST(FrameWalk, FramesOfAnotherKindAreNotHeard) {
    const Bytes other = stream(Frame{.frequency = 48000}, 10);  // 384 bytes each
    const FrameWalk found = walk(stream(Frame{}, 10) + other + stream(Frame{}, 10));
    EXPECT_EQ(found.frames, 20);
    EXPECT_EQ(found.gaps, 1);
    EXPECT_EQ(found.first_gap, 10 * 417);
    EXPECT_EQ(found.bytes_in_gaps, 10 * 384);
}

// --- gaps

TEST(FrameWalk, JunkBetweenFramesIsSteppedOver) {
    const Bytes junk = zeros(100) + Bytes("\xFF\xFB\x90") + zeros(50);
    const FrameWalk found =
        walk(stream(Frame{}, 30) + junk + stream(Frame{}, 20) + zeros(1) + stream(Frame{}, 10));
    EXPECT_EQ(found.frames, 60);
    EXPECT_EQ(found.gaps, 2);
    EXPECT_EQ(found.first_gap, 30 * 417);
    EXPECT_EQ(found.bytes_in_gaps, 154);
    EXPECT_EQ(found.end, 60 * 417 + 154);
    EXPECT_EQ(found.bytes_after, 0);
}

TEST(FrameWalk, HeaderInJunkNeedsAnotherAfterIt) {
    const Bytes lone = Frame{}.bytes() + zeros(40);
    const FrameWalk found = walk(stream(Frame{}, 10) + zeros(7) + lone + stream(Frame{}, 10));
    EXPECT_EQ(found.frames, 20);
    EXPECT_EQ(found.gaps, 1);
    EXPECT_EQ(found.bytes_in_gaps, 7 + 417 + 40);
}

TEST(FrameWalk, LastFrameAfterJunkEndsTheAudio) {
    const FrameWalk found = walk(stream(Frame{}, 10) + zeros(7) + Frame{}.bytes());
    EXPECT_EQ(found.frames, 11);
    EXPECT_EQ(found.gaps, 1);
    EXPECT_EQ(found.bytes_after, 0);
}

// A spliced file: the eleventh frame has lost its end, so the twelfth begins inside it.
TEST(FrameWalk, FrameThatOverlapsTheNextOneReplacesIt) {
    const FrameWalk found =
        walk(stream(Frame{}, 10) + Frame{}.bytes().first(200) + stream(Frame{}, 10));
    EXPECT_EQ(found.frames, 10 + 1 + 9);
    EXPECT_EQ(found.gaps, 1);
    EXPECT_EQ(found.bytes_in_gaps, 200);
}

// --- the end

TEST(FrameWalk, CutLastFrameIsNotHeard) {
    for (const std::size_t kept : {std::size_t{4}, std::size_t{200}, kFrame - 1}) {
        const FrameWalk found = walk(stream(Frame{}, 20) + Frame{}.bytes().first(kept));
        EXPECT_EQ(found.frames, 20);
        EXPECT_TRUE(found.last_frame_is_cut) << kept;
        EXPECT_EQ(found.bytes_after, kept);
        EXPECT_EQ(found.end, 20 * 417);
        EXPECT_EQ(found.gaps, 0);
    }
}

TEST(FrameWalk, CutHeaderIsNoFrame) {
    for (const std::size_t kept : {1U, 2U, 3U}) {
        const FrameWalk found = walk(stream(Frame{}, 20) + Frame{}.bytes().first(kept));
        EXPECT_EQ(found.frames, 20);
        EXPECT_FALSE(found.last_frame_is_cut);
        EXPECT_EQ(found.bytes_after, kept);
    }
}

TEST(FrameWalk, OtherBytesAfterTheLastFrameAreNoCutFrame) {
    const FrameWalk found = walk(stream(Frame{}, 20) + Bytes("APETAGEX") + zeros(92));
    EXPECT_EQ(found.frames, 20);
    EXPECT_FALSE(found.last_frame_is_cut);
    EXPECT_EQ(found.bytes_after, 100);
    EXPECT_EQ(found.gaps, 0);
}

// --- where there is nothing to walk

TEST(FrameWalk, NoFrameAtTheStartIsNoStream) {
    for (const Bytes& file : {Bytes(), zeros(3), zeros(1000), Frame{}.bytes().first(416)}) {
        const FrameWalk found = walk(file);
        EXPECT_EQ(found.frames, 0);
        EXPECT_EQ(found.frequency, 0);
        EXPECT_EQ(found.milliseconds, 0);
    }
}

// --- blocks: frames of 24 and 120 bytes put a header across every kind of border

TEST(FrameWalk, LosesNoFrameWhereBlocksMeet) {
    const Frame slow{.version = 2, .layer = 3, .kbps = 8, .frequency = 24000};
    Bytes pairs;
    for (int pair = 0; pair < 3'000; ++pair) {
        pairs += slow.bytes() + slow.with_kbps(40).bytes();
    }
    for (std::size_t before = 0; before < 24; ++before) {
        const FrameWalk found =
            walk(zeros(before) + pairs + slow.bytes().first(20), static_cast<std::int64_t>(before));
        EXPECT_EQ(found.frames, 6'000) << before;
        EXPECT_EQ(found.gaps, 0) << before;
        EXPECT_TRUE(found.last_frame_is_cut) << before;
    }
}

TEST(FrameWalk, ReadsEveryByteOnceInLargeBlocks) {
    const Bytes audio = stream(Frame{}, 12'000);  // 5 MB
    MemoryEnvironment world;
    world.files.put(kName, audio);
    const auto opened = world.files.open(kName, OpenMode::Read);
    FileWindow window(*opened);
    world.files.reset_counts();
    EXPECT_EQ(FrameWalker(window, window.length()).run(0).frames, 12'000);
    EXPECT_LE(world.files.bytes_read(), audio.size() + audio.size() / 100);
    EXPECT_LE(world.files.calls(FileCall::Read), 4 + audio.size() / 65'000);
}

// For any content of the gap, no byte of it is read repeatedly.
TEST(FrameWalk, ReadsALongGapOnce) {
    for (const Bytes& gap : {repeated(2'000'000, 0xFF), stream(Frame{.frequency = 48000}, 5'000)}) {
        const Bytes file = stream(Frame{}, 10) + gap + stream(Frame{}, 10);
        MemoryEnvironment world;
        world.files.put(kName, file);
        const auto opened = world.files.open(kName, OpenMode::Read);
        FileWindow window(*opened);
        world.files.reset_counts();
        EXPECT_EQ(FrameWalker(window, window.length()).run(0).frames, 20);
        EXPECT_LE(world.files.bytes_read(), file.size() + file.size() / 10);
    }
}

// --- through the public function

TEST(WalkFrames, BeginsAfterTheTagAndEndsAtTheRecord) {
    const Bytes tag = Tag().text("TIT2", "Song").padded_to(1000).bytes();
    const Opened file(tag + stream(Frame{}, 120) + Id3v1{.title = "Song"}.bytes());
    const FrameWalk found = file.walk();
    EXPECT_EQ(found.first_frame, 1000);
    EXPECT_EQ(found.frames, 120);
    EXPECT_EQ(found.bytes_after, 0);
}

TEST(WalkFrames, FrameCutByTheRecordIsCut) {
    const Opened file(stream(Frame{}, 120) + Frame{}.bytes().first(300) +
                      Id3v1{.title = "Song"}.bytes());
    const FrameWalk found = file.walk();
    EXPECT_TRUE(found.last_frame_is_cut);
    EXPECT_EQ(found.bytes_after, 300);
}

// The duration that hosts read counts frames up to the change only: 110 of 320 kbit/s and 110 of
// 128, then 400 in another mode.
TEST(WalkFrames, CountsMoreThanTheDurationWhereFramesChangeTheirMode) {
    std::vector<int> rates;
    for (int frame = 0; frame < 220; ++frame) {
        rates.push_back(frame % 2 == 0 ? 320 : 128);
    }
    const Opened file(variable_stream(Frame{}, rates) +
                      stream(Frame{}.with_mode(Mode::JointStereo), 400));
    EXPECT_EQ(file.header.Duration(), 5747);      // 220 * 1152 / 44.1 = 5,746.94
    EXPECT_EQ(file.walk().milliseconds, 16'196);  // 620 * 1152 / 44.1 = 16,195.92
}

TEST(WalkFrames, FollowsTheAudioThatASaveHasMoved) {
    Opened file(stream(Frame{}, 120));
    file.header.Title(u"Song");
    file.header.SaveAllInfo();
    const FrameWalk found = file.walk();
    EXPECT_GT(found.first_frame, 0);
    EXPECT_EQ(found.frames, 120);
    EXPECT_EQ(found.bytes_after, 0);
}

TEST(WalkFrames, SearchesAgainInAFileThatAnotherProgramHasChanged) {
    Opened file(stream(Frame{}, 120));
    file.world.files.put(kName, zeros(50) + stream(Frame{}, 150));
    const FrameWalk found = file.walk();
    EXPECT_EQ(found.first_frame, 50);
    EXPECT_EQ(found.frames, 150);
}

// Bytes that another program cut off during the walk.
TEST(FrameWalk, FileThatWasCutSinceEndsWithItsLastFrame) {
    constexpr std::int64_t kOldLength = 20 * 417 + 1'000;
    struct Case {
        const char* name;
        Bytes after;
    };
    const Case cases[] = {
        {"between two frames", {}},
        {"within a header", Bytes{0, 0, 0, 0, 0xFF, 0xFB}},
        {"before the frame that would confirm another", zeros(4) + Frame{}.bytes()},
    };
    for (const Case& c : cases) {
        ShrunkFile file(stream(Frame{}, 20) + c.after, kOldLength);
        FileWindow window(file);
        const FrameWalk found = FrameWalker(window, kOldLength).run(0);
        EXPECT_EQ(found.frames, 20) << c.name;
        EXPECT_EQ(found.end, 20 * 417) << c.name;
        EXPECT_EQ(found.gaps, 0) << c.name;
        EXPECT_EQ(found.bytes_after, 1'000) << c.name;
        EXPECT_FALSE(found.last_frame_is_cut) << c.name;
    }
}

TEST(WalkFrames, IsEmptyForAFileOfAnotherKind) {
    Opened file(stream(Frame{}, 120));
    file.world.files.put(u"song.wav", stream(Frame{}, 120));
    file.header.FileName(u"song.wav");
    EXPECT_EQ(file.walk().frames, 0);
    EXPECT_EQ(file.walk().frequency, 0);
}

TEST(WalkFrames, IsEmptyWithoutAFileOrAStream) {
    EXPECT_EQ(walk_frames(cMPEGHeader()).frequency, 0);
    EXPECT_EQ(Opened(zeros(6000)).walk().frequency, 0);
}

TEST(WalkFrames, RaisesNoEvent) {
    Opened file(stream(Frame{}, 120));
    file.header.Reading = [](const String&) { FAIL(); };
    file.header.Scanning = [](const String&, std::int32_t, std::int32_t, bool&) { FAIL(); };
    file.world.files.put(kName, zeros(50) + stream(Frame{}, 150));
    EXPECT_EQ(file.walk().frames, 150);
}

std::int32_t number_of_walk_error(const Opened& file) {
    const Error error = test::required_error([&] { static_cast<void>(file.walk()); });
    EXPECT_EQ(error.source(), u"BrindleId3v1Tagger");
    return error.number();
}

TEST(WalkFrames, RaisesWhatKeepsTheFileFromBeingRead) {
    Opened file(stream(Frame{}, 12'000));
    for (const FileCall call : {FileCall::Open, FileCall::Length, FileCall::Read}) {
        file.world.files.fail({.call = call, .from_then_on = true});
        EXPECT_EQ(number_of_walk_error(file), 57) << name_of(call);
    }
    file.world.files.fail({.nth = 20, .call = FileCall::Read});
    EXPECT_EQ(number_of_walk_error(file), 57);
}

TEST(WalkFrames, FileThatCouldNotBeReadIsNotCalledEmpty) {
    Opened file{Bytes()};
    file.world.files.put(kName, stream(Frame{}, 120));
    file.world.files.fail({.call = FileCall::Read, .from_then_on = true});
    file.header.FileName(kName);
    file.world.files.fail_nothing();
    EXPECT_EQ(number_of_walk_error(file), 57);
}

// --- the public function

TEST(WalkFrames, HandsFramesToAVisitor) {
    const Opened file(stream(Frame{}, 120));
    std::size_t bytes = 0;
    const FrameWalk found =
        walk_frames(file.header, [&](const WalkedFrame& frame) { bytes += frame.bytes.size(); });
    EXPECT_EQ(found, file.walk());
    EXPECT_EQ(bytes, 120 * kFrame);
}

TEST(WalkFrames, VisitorEndsTheWalkByThrowing) {
    const Opened file(stream(Frame{}, 120));
    std::int64_t frames = 0;
    EXPECT_THROW(walk_frames(file.header,
                             [&](const WalkedFrame&) {
                                 if (++frames == 5) {
                                     throw Error(RuntimeError::InvalidCall);
                                 }
                             }),
                 Error);
    EXPECT_EQ(frames, 5);
    EXPECT_EQ(file.world.files.open_files(), 0);
}

}  // namespace
}  // namespace brindle::test
