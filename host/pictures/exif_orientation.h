// How a camera was held: the orientation in EXIF data.
#pragma once

#include <cstdint>
#include <span>

namespace brindle::host {

// 1 to 8; 1, upright, also for data that is cut or has none. The data begins with the byte order.
[[nodiscard]] int exif_orientation(std::span<const std::uint8_t> tiff);

}  // namespace brindle::host
