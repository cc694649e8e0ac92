#pragma once

#include <cstddef>
#include <cstdint>

namespace brindle {

// The number that `width` bytes stand for, most significant first.
template <std::size_t width>
[[nodiscard]] constexpr std::uint32_t big_endian(const std::uint8_t* bytes) noexcept {
    static_assert(width <= sizeof(std::uint32_t));
    std::uint32_t value = 0;
    for (std::size_t index = 0; index < width; ++index) {
        value = value << 8U | bytes[index];
    }
    return value;
}

}  // namespace brindle
