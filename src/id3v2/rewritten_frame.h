// Content of frames in which the caller of the editor has replaced an image or a text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <brindle/tag_edit.h>

namespace brindle {

// Whether texts of the frame can be replaced: nothing but text is in it.
[[nodiscard]] bool has_values(std::string_view id) noexcept;

// The new content of a picture (APIC) of version 2.3; none where it stays. `prefix` bytes precede
// it in the frame's body.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> with_new_image(
    std::span<const std::uint8_t> content, std::size_t prefix, const TagFrame& frame,
    const decltype(EditOptions::new_image)& new_image);

// The same of a frame that has_values().
[[nodiscard]] std::optional<std::vector<std::uint8_t>> with_new_text(
    std::string_view id, std::span<const std::uint8_t> content, const TagFrame& frame,
    const decltype(EditOptions::new_text)& new_text);

}  // namespace brindle
