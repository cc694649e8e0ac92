// PNG images, by libpng.
#pragma once

#include <cstdint>
#include <span>

#include "pictures/image.h"

namespace brindle::host {

// Of 8 bits a channel; transparent pixels are blended with white. Refuses what it cannot decode
// whole.
[[nodiscard]] Image read_png(std::span<const std::uint8_t> bytes);

}  // namespace brindle::host
