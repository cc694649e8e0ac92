// The frame in which an encoder tells its delay, put together by hand.
#include "listen/encoder_delay.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/bytes.h"

namespace brindle::test {
namespace {

using host::EncoderDelay;
using host::read_encoder_delay;

// All four fields are there unless the flags say less. The delays: 576 and 1,105, 12 bits each.
Bytes header_frame(std::size_t place = 36, const std::string& encoder = "LAME3.100",
                   const std::string& letters = "Info", std::uint32_t flags = 0xF) {
    Bytes frame = Bytes(std::vector<std::uint8_t>{0xFF, 0xFB, 0x90, 0x64}) + zeros(place - 4);
    frame += Bytes(letters) + big_endian(flags, 4);
    frame += zeros((flags & 1 ? 4 : 0) + (flags & 2 ? 4 : 0) + (flags & 4 ? 100 : 0) +
                   (flags & 8 ? 4 : 0));
    return frame + Bytes(encoder) + zeros(12) + big_endian(0x240'451, 3) + zeros(100);
}

TEST(EncoderDelay, IsTheEncodersAndTheDecoders) {
    EXPECT_EQ(read_encoder_delay(header_frame()), (EncoderDelay{576 + 529, 1'105 - 529}));
}

TEST(EncoderDelay, IsReadAtEachPlaceAndWithEachFlag) {
    const EncoderDelay kFound{1'105, 576};
    EXPECT_EQ(read_encoder_delay(header_frame(21)), kFound);
    EXPECT_EQ(read_encoder_delay(header_frame(13)), kFound);
    EXPECT_EQ(read_encoder_delay(header_frame(36, "LAME3.100", "Xing")), kFound);
    for (std::uint32_t flags = 0; flags < 16; ++flags) {
        EXPECT_EQ(read_encoder_delay(header_frame(36, "Lavf58.45", "Xing", flags)), kFound);
    }
}

TEST(EncoderDelay, IsNotReadFromOtherEncodersOrOtherFrames) {
    EXPECT_EQ(read_encoder_delay(header_frame(36, "GOGO3.13b")), EncoderDelay());
    EXPECT_EQ(read_encoder_delay(header_frame(36, std::string(9, '\0'))), EncoderDelay());
    EXPECT_EQ(read_encoder_delay(header_frame(36, "LAME3.100", "VBRI")), EncoderDelay());
    EXPECT_EQ(read_encoder_delay(header_frame(30)), EncoderDelay());
}

TEST(EncoderDelay, PaddingShorterThanTheDecodersDelayIsNone) {
    Bytes frame = header_frame();
    frame[frame.size() - 102] = 0x41;  // 256
    frame[frame.size() - 101] = 0x00;
    EXPECT_EQ(read_encoder_delay(frame).after, 0);
}

TEST(EncoderDelay, FrameMayBeCutAnywhere) {
    const Bytes frame = header_frame();
    for (std::size_t size = 0; size < 36 + 120 + 24; ++size) {
        EXPECT_EQ(read_encoder_delay(frame.first(size)), EncoderDelay()) << size;
    }
    EXPECT_EQ(read_encoder_delay(frame.first(36 + 120 + 24)).before, 1'105);
}

}  // namespace
}  // namespace brindle::test
