#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace brindle {

// The place of the first such byte; the number of bytes when there is none.
[[nodiscard]] inline std::size_t find_byte(std::span<const std::uint8_t> bytes,
                                           std::uint8_t wanted) noexcept {
    if (bytes.empty()) {
        return 0;
    }
    const void* const found = std::memchr(bytes.data(), wanted, bytes.size());
    return found == nullptr
               ? bytes.size()
               : static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data());
}

}  // namespace brindle
