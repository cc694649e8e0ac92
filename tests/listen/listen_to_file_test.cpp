// Files in memory, made of frames without sound: what is told of the frames themselves. What is
// heard in real files is shown with real encoders (tests/real).
#include "listen/listen_to_file.h"

#include <cstdint>
#include <optional>

#include <gtest/gtest.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/error.h>

#include "listen/layer3_data.h"
#include "support/memory_environment.h"

namespace brindle::test {
namespace {

using host::DecodeFault;
using host::Listening;
using host::ListenOptions;

const String kName = u"song.mp3";

struct Opened {
    explicit Opened(const Bytes& file) : size(static_cast<std::int64_t>(file.size())) {
        world.files.put(kName, file);
        header.FileName(kName);
    }
    [[nodiscard]] std::optional<Listening> listen(const ListenOptions& options = {}) const {
        return listen_to_file(header, size, options);
    }

    MemoryEnvironment world;
    cMPEGHeader header{world.environment};
    std::int64_t size;
};

Bytes frames(std::size_t count, const SideInformation& side = {}) {
    Bytes bytes;
    for (; count > 0; --count) {
        bytes += layer3_frame(Frame{}, side);
    }
    return bytes;
}

const SideInformation kBad{.granules = {{.big_values = 300}}};
const SideInformation kNeedsTheFrameBefore{.main_data_begin = 100};

TEST(ListenToFile, FramesPlayTheirTime) {
    const Listening heard = Opened(frames(120)).listen().value();
    EXPECT_EQ(heard.milliseconds, 3'135);  // 120 * 1,152 / 44.1 = 3,134.69
    EXPECT_EQ(heard.frequency, 44'100);
    EXPECT_EQ(heard.channels, 2);
    EXPECT_EQ(heard.undecoded.count, 0);
    EXPECT_EQ(heard.frames_cut_off, 0);
    EXPECT_EQ(heard.sound, std::nullopt);
}

TEST(ListenToFile, NoStreamIsNothing) {
    EXPECT_FALSE(Opened(zeros(10'000)).listen());
    EXPECT_FALSE(Opened(Bytes()).listen());
}

TEST(ListenToFile, HeaderFrameIsNotDecodedAndGivesTheDelay) {
    Bytes header = layer3_frame(Frame{}, {}).first(36) + Bytes("Info") + big_endian(0, 4) +
                   Bytes("LAME3.100") + zeros(12) + big_endian(0x240'451, 3);
    header += zeros(417 - header.size());
    const Listening heard = Opened(header + frames(120)).listen().value();
    EXPECT_EQ(heard.milliseconds, 3'135);
    EXPECT_EQ(heard.delay, (host::EncoderDelay{1'105, 576}));
}

TEST(ListenToFile, FirstBadFrameIsNamed) {
    const Listening heard =
        Opened(frames(110) + frames(1, kBad) + frames(10) + frames(2, kBad) + frames(9))
            .listen()
            .value();
    EXPECT_EQ(heard.undecoded.count, 3);
    EXPECT_EQ(heard.undecoded.offset, 110 * 417);
    EXPECT_EQ(heard.undecoded.milliseconds, 2'873);  // 110 * 1,152 / 44.1 = 2,873.47
    EXPECT_EQ(heard.undecoded.fault, DecodeFault::InvalidFields);
    EXPECT_EQ(heard.milliseconds, 3'448);  // 132 frames: 3,448.16
}

TEST(ListenToFile, FrameAfterAGapHasLostItsData) {
    const Bytes after_gap = zeros(50) + frames(1, kNeedsTheFrameBefore) + frames(20);
    const Listening heard = Opened(frames(110) + after_gap).listen().value();
    EXPECT_EQ(heard.undecoded.count, 1);
    EXPECT_EQ(heard.undecoded.offset, 110 * 417 + 50);
    EXPECT_EQ(heard.undecoded.fault, DecodeFault::MissingData);
}

TEST(ListenToFile, FirstFramesOfACutFileAreNoFailure) {
    const Listening heard = Opened(frames(1, kNeedsTheFrameBefore) + frames(119)).listen().value();
    EXPECT_EQ(heard.frames_cut_off, 1);
    EXPECT_EQ(heard.undecoded.count, 0);
}

TEST(ListenToFile, FileOfBadFramesFails) {
    const Listening heard = Opened(frames(120, kBad)).listen().value();
    EXPECT_EQ(heard.undecoded.count, 120);
    EXPECT_EQ(heard.undecoded.offset, 0);
    EXPECT_EQ(heard.milliseconds, 3'135);
    EXPECT_EQ(heard.sound, std::nullopt);
}

// Each needs more than all the frames before it have.
TEST(ListenToFile, FileOfNothingButMissingDataFails) {
    const Frame kSmall{.version = 2, .kbps = 8, .frequency = 24'000, .mode = Mode::SingleChannel};
    Bytes file;
    for (int number = 0; number < 15; ++number) {
        file += layer3_frame(kSmall, {.main_data_begin = 255});
    }
    const Listening heard = Opened(file).listen().value();
    EXPECT_EQ(heard.undecoded.count, 15);
    EXPECT_EQ(heard.undecoded.fault, DecodeFault::MissingData);
    EXPECT_EQ(heard.frames_cut_off, 0);
}

TEST(ListenToFile, QuickLeavesTheMiddleOut) {
    // 38.28 frames a second: 2,296 are a minute. 5,000 have a middle.
    const Bytes file = frames(3'000) + frames(1, kBad) + frames(1'999);
    EXPECT_EQ(Opened(file).listen()->undecoded.count, 1);
    const Listening quick = Opened(file).listen({.quick = true}).value();
    EXPECT_EQ(quick.undecoded.count, 1) << "3,000 is one of the last 2,296";
    const Bytes longer = frames(3'000) + frames(1, kBad) + frames(2'999);
    const Listening left_out = Opened(longer).listen({.quick = true}).value();
    EXPECT_EQ(left_out.undecoded.count, 0);
    EXPECT_FALSE(left_out.is_whole);
    EXPECT_EQ(left_out.milliseconds, 156'735);  // 6,000 frames: 156,734.69
}

// The first frames after what is left out need frames that were not decoded.
TEST(ListenToFile, QuickFillsTheReservoirAfterTheMiddle) {
    const Bytes file = frames(1) + frames(5'999, kNeedsTheFrameBefore);
    const Listening quick = Opened(file).listen({.quick = true}).value();
    EXPECT_FALSE(quick.is_whole);
    EXPECT_EQ(quick.undecoded.count, 0);
    EXPECT_EQ(quick.frames_cut_off, 0);
}

TEST(ListenToFile, QuickReportsThePositionOfABadFrameAtTheEnd) {
    const Listening quick =
        Opened(frames(9'000) + frames(1, kBad) + frames(99)).listen({.quick = true}).value();
    EXPECT_EQ(quick.undecoded.count, 1);
    EXPECT_EQ(quick.undecoded.offset, 9'000 * 417);
    EXPECT_EQ(quick.undecoded.milliseconds, 235'102);  // 9,000 * 1,152 / 44.1 = 235,102.04
}

TEST(ListenToFile, ErrorsOfReadingAreRaised) {
    Opened file(frames(1'000));
    file.world.files.fail({.call = FileCall::Read, .from_then_on = true});
    EXPECT_THROW(static_cast<void>(file.listen()), Error);
}

}  // namespace
}  // namespace brindle::test
