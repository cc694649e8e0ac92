// Width and height of an image, from its header alone.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "util/binary_file.h"
#include "util/byte_range.h"

namespace brindle {

struct ImageSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

// Of a PNG, JPEG, GIF, BMP or WebP image, told by its first bytes. Nothing for any other, for a
// header that is cut and for a size of 0. Reads a few blocks of the image at most, and none of
// what `held` has of its beginning.
[[nodiscard]] std::optional<ImageSize> read_image_size(BinaryFile& file, const ByteRange& image,
                                                       std::span<const std::uint8_t> held = {});

}  // namespace brindle
