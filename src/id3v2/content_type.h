// The content type frame, TCON: a genre's number in parentheses, then free text.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "id3v2/stored_text.h"

namespace brindle {

struct ContentType {
    std::optional<std::uint8_t> number;  // none: the number read before stays
    StoredText name;
};

// How a value reads. The number is cut one digit short, so (17) reads as 1: libraries of the field
// have been filed by these numbers for years, and the same files must go on reading the same.
[[nodiscard]] ContentType read_content_type(const StoredText& value);

}  // namespace brindle
