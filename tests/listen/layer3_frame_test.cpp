// What the side information of Layer III tells, from bits laid out as the standards have them.
#include "listen/layer3_frame.h"

#include <algorithm>
#include <cstddef>
#include <ostream>

#include <gtest/gtest.h>

#include "listen/layer3_data.h"
#include "listen/stream_format.h"

namespace brindle::test {
namespace {

using host::Layer3Frame;

struct Kind {
    const char* name;
    Frame frame;
    std::size_t side_begin;
    std::size_t side_size;
    std::size_t granules;
};

void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.name;
}

const Kind kKinds[] = {
    {"Mpeg1Stereo", {}, 4, 32, 4},
    {"Mpeg1JointStereo", {.mode = Mode::JointStereo}, 4, 32, 4},
    {"Mpeg1Mono", {.mode = Mode::SingleChannel}, 4, 17, 2},
    {"Mpeg1WithCrc", {.crc = true}, 6, 32, 4},
    {"Mpeg2Stereo", {.version = 2, .kbps = 64, .frequency = 22050}, 4, 17, 2},
    {"Mpeg2Mono",
     {.version = 2, .kbps = 64, .frequency = 24000, .mode = Mode::SingleChannel},
     4,
     9,
     1},
    {"Mpeg25Mono",
     {.version = 25, .kbps = 32, .frequency = 8000, .mode = Mode::SingleChannel, .crc = true},
     6,
     9,
     1},
};

Layer3Frame read(const Bytes& frame) {
    const auto parts = host::read_layer3_frame(frame, host::stream_format(frame));
    EXPECT_TRUE(parts);
    return parts.value_or(Layer3Frame());
}

class Layer3FrameOfKind : public ::testing::TestWithParam<Kind> {};

TEST_P(Layer3FrameOfKind, PartsLieWhereTheStandardHasThem) {
    const Kind& kind = GetParam();
    const Layer3Frame parts = read(layer3_frame(kind.frame, {}));
    EXPECT_EQ(parts.side_begin, kind.side_begin);
    EXPECT_EQ(parts.own_begin, kind.side_begin + kind.side_size);
    EXPECT_EQ(parts.own_bytes, kind.frame.length() - kind.side_begin - kind.side_size);
    EXPECT_EQ(parts.main_data_begin, 0U);
    EXPECT_EQ(parts.data_bits, 0U);
    EXPECT_TRUE(parts.is_valid);
}

TEST_P(Layer3FrameOfKind, DataOfAllGranulesIsAddedUp) {
    const Kind& kind = GetParam();
    SideInformation side{.main_data_begin = kind.frame.version == 1 ? 511U : 255U};
    std::size_t bits = 0;
    for (unsigned number = 1; number <= kind.granules; ++number) {
        side.granules.push_back({.length = 1'000 * number + number, .big_values = 288});
        bits += 1'001 * number;
    }
    const Layer3Frame parts = read(layer3_frame(kind.frame, side));
    EXPECT_EQ(parts.main_data_begin, side.main_data_begin);
    EXPECT_EQ(parts.data_bits, bits);
    EXPECT_TRUE(parts.is_valid);
}

TEST_P(Layer3FrameOfKind, ForbiddenValueOfAnyGranuleIsSeen) {
    const Kind& kind = GetParam();
    for (std::size_t place = 0; place < kind.granules; ++place) {
        SideInformation side;
        side.granules.resize(kind.granules);
        side.granules[place].big_values = 289;
        EXPECT_FALSE(read(layer3_frame(kind.frame, side)).is_valid);
        side.granules[place] = {.is_switched = true};
        EXPECT_FALSE(read(layer3_frame(kind.frame, side)).is_valid);
        side.granules[place] = {.block_type = 2, .is_switched = true};
        EXPECT_TRUE(read(layer3_frame(kind.frame, side)).is_valid);
    }
}

TEST_P(Layer3FrameOfKind, WithoutDataOnlySideInformationChanges) {
    const Kind& kind = GetParam();
    SideInformation side{.main_data_begin = 200};
    side.granules.resize(kind.granules, {.length = 4'000, .big_values = 300, .is_switched = true});
    Bytes frame = layer3_frame(kind.frame, side);
    std::fill(frame.begin() + static_cast<std::ptrdiff_t>(kind.side_begin + kind.side_size),
              frame.end(), std::uint8_t{0xA5});
    const Layer3Frame parts = read(frame);
    for (const std::size_t begin : {std::size_t{0}, std::size_t{1}, std::size_t{255},
                                    host::longest_reservoir(host::stream_format(frame))}) {
        const Bytes empty = host::without_data(frame, host::stream_format(frame), parts, begin);
        EXPECT_EQ(empty,
                  frame.first(kind.side_begin) +
                      side_bytes(kind.frame, {.main_data_begin = static_cast<unsigned>(begin)}) +
                      frame.last(parts.own_bytes));
    }
}

TEST_P(Layer3FrameOfKind, FrameTooShortForItsSideInformationHasNone) {
    const Kind& kind = GetParam();
    const Bytes frame = layer3_frame(kind.frame, {});
    const std::size_t own_begin = kind.side_begin + kind.side_size;
    const auto format = host::stream_format(frame);
    EXPECT_TRUE(host::read_layer3_frame(frame.first(own_begin), format));
    EXPECT_FALSE(host::read_layer3_frame(frame.first(own_begin - 1), format));
}

INSTANTIATE_TEST_SUITE_P(All, Layer3FrameOfKind, ::testing::ValuesIn(kKinds),
                         [](const auto& kind) { return kind.param.name; });

// --- the header

struct Format {
    Frame frame;
    host::StreamFormat format;
};

TEST(StreamFormat, IsThatOfTheHeader) {
    const Format kFormats[] = {
        {{}, {3, true, false, 2, 44'100, 1'152}},
        {{.frequency = 32'000, .mode = Mode::SingleChannel, .crc = true},
         {3, true, true, 1, 32'000, 1'152}},
        {{.frequency = 48'000, .mode = Mode::DualChannel}, {3, true, false, 2, 48'000, 1'152}},
        {{.version = 2, .kbps = 64, .frequency = 22'050, .mode = Mode::JointStereo},
         {3, false, false, 2, 22'050, 576}},
        {{.version = 25, .kbps = 64, .frequency = 11'025}, {3, false, false, 2, 11'025, 576}},
        {{.layer = 2}, {2, true, false, 2, 44'100, 1'152}},
        {{.version = 2, .layer = 2, .kbps = 64, .frequency = 16'000},
         {2, false, false, 2, 16'000, 1'152}},
        {{.layer = 1}, {1, true, false, 2, 44'100, 384}},
    };
    for (const auto& [frame, format] : kFormats) {
        const host::StreamFormat read = host::stream_format(frame.bytes());
        EXPECT_EQ(read.layer, format.layer);
        EXPECT_EQ(read.is_mpeg1, format.is_mpeg1);
        EXPECT_EQ(read.is_protected, format.is_protected);
        EXPECT_EQ(read.channels, format.channels);
        EXPECT_EQ(read.frequency, format.frequency);
        EXPECT_EQ(read.samples_per_frame, format.samples_per_frame);
    }
}

}  // namespace
}  // namespace brindle::test
