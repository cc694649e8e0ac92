// A smaller JPEG image of a JPEG or PNG image.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace brindle::host {

// Of at most that many bytes, upright. First the quality is lowered, to 75 of 100; then the size,
// to 300 pixels on the longer side; then the quality further.
[[nodiscard]] std::vector<std::uint8_t> shrunk_image(std::span<const std::uint8_t> bytes,
                                                     std::size_t max_bytes);

}  // namespace brindle::host
