#pragma once

#include <optional>

#include "util/code_page_table.h"

namespace brindle {

// The code page in which this system's 8-bit programs write. Nothing unless it is single-byte and
// maps every byte there and back: otherwise pictures would not pass through text unchanged.
[[nodiscard]] std::optional<CodePageTable::Units> system_code_page();

// The same of any page by its number.
[[nodiscard]] std::optional<CodePageTable::Units> single_byte_code_page(unsigned number);

}  // namespace brindle
