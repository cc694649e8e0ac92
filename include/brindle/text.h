// Between the library's wide strings and UTF-8, the text of every host that is not Windows.
#pragma once

#include <string>
#include <string_view>

#include <brindle/export.h>
#include <brindle/values.h>

namespace brindle {

// Both directions are total and undo each other, so that any file name survives the round trip:
// a byte that is no part of valid UTF-8 becomes one unit U+DC80..U+DCFF and back; any other lone
// surrogate is written as U+FFFD.
[[nodiscard]] BRINDLE_EXPORT std::string to_utf8(std::u16string_view text);
[[nodiscard]] BRINDLE_EXPORT String from_utf8(std::string_view text);

// Whether the 8-bit text of tags holds all of it: Windows-1252, on Windows the system's own code
// page. Another character is written as "?".
[[nodiscard]] BRINDLE_EXPORT bool fits_code_page(std::u16string_view text);

}  // namespace brindle
