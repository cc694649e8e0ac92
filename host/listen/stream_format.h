// What the header of a frame says about its sound.
#pragma once

#include <cstdint>
#include <span>

namespace brindle::host {

struct StreamFormat {
    int layer;  // 1 to 3
    bool is_mpeg1;
    bool is_protected;  // a CRC follows the header
    int channels;
    std::int32_t frequency;  // Hz
    std::int32_t samples_per_frame;
};

// `frame` begins with a valid header, as the frames of walk_frames() do.
[[nodiscard]] StreamFormat stream_format(std::span<const std::uint8_t> frame);

}  // namespace brindle::host
