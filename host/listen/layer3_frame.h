// The position of a Layer III frame's data. It may begin in earlier frames: the bit reservoir.
//
//   header 4 | CRC 2, where protected | side information | the frame's own bytes
//
//   Side information, 32 bytes in MPEG-1 (17 of one channel), else 17 (9):
//
//   main_data_begin   9 bits (MPEG-2 and 2.5: 8): the data begins that many bytes before its own
//   private           MPEG-1: 3 bits (one channel: 5), else 2 (1)
//   scfsi             MPEG-1: 4 bits a channel
//   then 59 bits (63) for each channel of each granule, of which MPEG-1 has two:
//     part2_3_length 12, big_values 9, global_gain 8, scalefac_compress 4 (9),
//     window_switching 1, and where that is set block_type 2; the rest does not matter here
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "stream_format.h"

namespace brindle::host {

struct Layer3Frame {
    std::size_t side_begin = 0;
    std::size_t own_begin = 0;
    std::size_t own_bytes = 0;
    std::size_t main_data_begin = 0;
    std::size_t data_bits = 0;  // of all granules and channels
    bool is_valid = true;       // no field has a value that the standard forbids
};

// Nothing when the frame is too short for its side information.
[[nodiscard]] std::optional<Layer3Frame> read_layer3_frame(std::span<const std::uint8_t> frame,
                                                           const StreamFormat& format);

// The frame with side information that refers to no data: it decodes to silence, and its own bytes
// and those from `main_data_begin` on stay available to the frames after it.
[[nodiscard]] std::vector<std::uint8_t> without_data(std::span<const std::uint8_t> frame,
                                                     const StreamFormat& format,
                                                     const Layer3Frame& parts,
                                                     std::size_t main_data_begin);

// The maximum of main_data_begin.
[[nodiscard]] constexpr std::size_t longest_reservoir(const StreamFormat& format) {
    return format.is_mpeg1 ? 511 : 255;
}

}  // namespace brindle::host
