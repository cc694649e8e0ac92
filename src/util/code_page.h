// The 8-bit text of tags: one byte of a file to one UTF-16 unit and back.
#pragma once

#include <cstdint>
#include <span>

#include <brindle/values.h>

namespace brindle {

// Windows-1252 with its five undefined bytes (81 8D 8F 90 9D) mapped to the same C1 code points,
// so that every byte of a file passes through text unchanged. On Windows the system's own code
// page serves when it is single-byte and maps all 256 bytes there and back.
[[nodiscard]] char16_t widen(std::uint8_t byte) noexcept;
[[nodiscard]] String widen(std::span<const std::uint8_t> bytes);
// A character outside the page becomes "?".
[[nodiscard]] std::uint8_t narrow(char16_t unit) noexcept;
// Whether ISO-8859-1 has the character, and the code page has it at the same place.
[[nodiscard]] bool is_read_alike(char16_t unit) noexcept;

}  // namespace brindle
