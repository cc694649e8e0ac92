// JPEG images, by libjpeg-turbo.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "pictures/image.h"

namespace brindle::host {

// Decoded to a longer side of at least that many pixels, or its own where it has fewer. Refuses
// what it cannot decode whole, and images of more than 500 scans.
[[nodiscard]] Image read_jpeg(std::span<const std::uint8_t> bytes, std::size_t longer_side);

// Quality as libjpeg counts it, 1 to 100.
[[nodiscard]] std::vector<std::uint8_t> jpeg_of(const Image& image, int quality);

}  // namespace brindle::host
