// Size and orientation of decoded images.
#pragma once

#include <cstddef>

#include "pictures/image.h"

namespace brindle::host {

// The same image with a longer side of that many pixels, at most its own: each new pixel is the
// mean of the area that it covers.
[[nodiscard]] Image scaled(const Image& image, std::size_t longer_side);

// Upright, by its EXIF orientation.
[[nodiscard]] Image turned(Image image);

}  // namespace brindle::host
