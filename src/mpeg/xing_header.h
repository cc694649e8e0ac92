// The header that encoders of variable bit rates put into the first frame.
#pragma once

#include <cstdint>
#include <span>

#include <brindle/values.h>

namespace brindle {

struct XingRecord {
    String Tag;  // "XING", or "" when there is no usable header
    std::int32_t Flags = 0;
    std::int32_t Frames = 0;
    std::int32_t Bytes = 0;
};

// Looks into a frame's bytes after its four header bytes. The letters may have any case, both
// counts must be announced, and no number may be above 2,147,483,647.
[[nodiscard]] XingRecord ReadXing(std::span<const std::uint8_t> frame_data);

// Whether the frame holds such a header, of any encoder and usable or not, in place of sound.
[[nodiscard]] bool holds_vbr_header(std::span<const std::uint8_t> frame_data);

}  // namespace brindle
