// What the decoder makes of frames that it can't decode: silence of their length, and a reason.
// That it decodes real ones is shown with real files (tests/real).
#include "listen/frame_decoder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>

#include <gtest/gtest.h>

#include "listen/layer3_data.h"

namespace brindle::test {
namespace {

using host::DecodeFault;
using host::FrameDecoder;

using Fault = std::optional<DecodeFault>;

// MPEG-1 at 128 kbit/s: 417 bytes, of which 381 are the frame's own.
constexpr std::size_t kOwn = 381;

struct Decoding {
    explicit Decoding(const Frame& first = {}) : decoder(host::stream_format(first.bytes())) {}

    // The fault of the frame; whatever it is, the samples are those of one frame. Data of NULs at
    // no gain is next to nothing.
    Fault operator()(const Bytes& frame) {
        const auto decoded = decoder.decode(frame);
        EXPECT_EQ(decoded.samples.size(), samples);
        EXPECT_TRUE(std::all_of(decoded.samples.begin(), decoded.samples.end(),
                                [](float sample) { return std::abs(sample) < 1e-9F; }));
        return decoded.fault;
    }

    FrameDecoder decoder;
    std::size_t samples = 2 * 1152;
};

Bytes frame(unsigned main_data_begin, unsigned data_bits = 0) {
    SideInformation side{.main_data_begin = main_data_begin, .granules = {}};
    // Granules have at most 4,095 bits.
    for (; data_bits > 0; data_bits -= std::min(data_bits, 4'000U)) {
        side.granules.push_back({.length = std::min(data_bits, 4'000U)});
    }
    return layer3_frame(Frame{}, side);
}

TEST(FrameDecoder, FrameWithoutDataIsSilence) {
    Decoding decode;
    EXPECT_EQ(decode(frame(0)), std::nullopt);
    EXPECT_EQ(decode(frame(0)), std::nullopt);
}

TEST(FrameDecoder, FirstFrameHasNoReservoir) {
    EXPECT_EQ(Decoding()(frame(1)), DecodeFault::MissingData);
    Decoding decode;
    EXPECT_EQ(decode(frame(100)), DecodeFault::MissingData);
    EXPECT_EQ(decode(frame(kOwn)), std::nullopt);
}

TEST(FrameDecoder, ReservoirIsWhatFramesLeaveOver) {
    Decoding decode;
    EXPECT_EQ(decode(frame(0, 8 * 81)), std::nullopt);  // 300 left
    EXPECT_EQ(decode(frame(301)), DecodeFault::MissingData);
    Decoding again;
    EXPECT_EQ(again(frame(0, 8 * 81)), std::nullopt);
    EXPECT_EQ(again(frame(300)), std::nullopt);
    EXPECT_EQ(again(frame(511)), std::nullopt) << "300 and 381, of which 511 can be told";
}

TEST(FrameDecoder, GapEmptiesTheReservoir) {
    Decoding decode;
    EXPECT_EQ(decode(frame(0)), std::nullopt);
    decode.decoder.lose_reservoir();
    EXPECT_EQ(decode(frame(1)), DecodeFault::MissingData);
    EXPECT_EQ(decode(frame(kOwn)), std::nullopt);
}

TEST(FrameDecoder, DataEndsWithTheFrame) {
    Decoding decode;
    EXPECT_EQ(decode(frame(0, 8 * kOwn)), std::nullopt);
    EXPECT_EQ(decode(frame(0, 8 * kOwn + 1)), DecodeFault::TooMuchData);
    EXPECT_EQ(decode(frame(100, 8 * (kOwn + 100))), std::nullopt);
    EXPECT_EQ(decode(frame(0, 8 * kOwn)), std::nullopt);
}

TEST(FrameDecoder, ForbiddenFieldsAreNotDecoded) {
    Decoding decode;
    EXPECT_EQ(decode(layer3_frame(Frame{}, {.granules = {{.big_values = 289}}})),
              DecodeFault::InvalidFields);
    EXPECT_EQ(decode(frame(0)), std::nullopt);
}

// The decoder itself waits for the other half.
TEST(FrameDecoder, HalfAFrameIsRefusedAndTheNextIsNot) {
    Decoding decode;
    EXPECT_EQ(decode(frame(0)), std::nullopt);
    EXPECT_EQ(decode(frame(0).first(200)), DecodeFault::Refused);
    EXPECT_EQ(decode(frame(0)), std::nullopt);
    EXPECT_EQ(decode(frame(0) + zeros(50)), DecodeFault::Refused);
    EXPECT_EQ(decode(frame(0)), std::nullopt);
}

TEST(FrameDecoder, ChannelsAreThoseOfTheFirstFrame) {
    Decoding stereo;
    EXPECT_EQ(stereo(frame(0)), std::nullopt);
    const Frame kMono{.mode = Mode::SingleChannel};
    EXPECT_EQ(stereo(layer3_frame(kMono, {})), std::nullopt);
    EXPECT_EQ(stereo(frame(0)), std::nullopt);
    Decoding mono(kMono);
    mono.samples = 1152;
    EXPECT_EQ(mono(layer3_frame(kMono, {})), std::nullopt);
    EXPECT_EQ(mono(frame(0)), std::nullopt);
    EXPECT_EQ(mono(layer3_frame(kMono, {})), std::nullopt);
}

TEST(FrameDecoder, BitRateMayChangeWithEachFrame) {
    Decoding decode;
    for (const int kbps : {32, 320, 128, 64}) {
        EXPECT_EQ(decode(layer3_frame(Frame{.kbps = kbps}, {})), std::nullopt);
        EXPECT_EQ(decode(layer3_frame(Frame{.kbps = kbps, .padding = true}, {})), std::nullopt);
    }
}

}  // namespace
}  // namespace brindle::test
