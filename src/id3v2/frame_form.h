// The text in a frame's body, in any form.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include <brindle/values.h>

namespace brindle {

// Whether a frame of this id, of any version, holds text (or a link) and nothing else.
[[nodiscard]] bool is_text_frame(std::string_view id) noexcept;

// All text of such a frame run together, by its encoding byte: language, descriptions and text,
// without byte order marks and the NULs between them. Two bodies of equal text say the same.
[[nodiscard]] String text_of_frame(std::string_view id, std::span<const std::uint8_t> body);

// The description of user-defined text (TXXX, TXX).
[[nodiscard]] String description_of(std::span<const std::uint8_t> body);

}  // namespace brindle
