// The checksum of a protected frame.
#pragma once

#include <optional>
#include <string_view>

namespace brindle::host {

// Of the bytes of a frame with a checksum: whether its CRC-16 fits its header and what follows it:
// the side information of Layer III, bit allocation and scale factor selection of Layer II (ISO/IEC
// 11172-3 and 13818-3, 2.4.3.1). None for frames of Layer I, in free format, or too short for it.
[[nodiscard]] std::optional<bool> frame_crc_fits(std::string_view bytes);

}  // namespace brindle::host
