// The names of the genre numbers that ID3v1 records and content types such as "(17)" hold.
#pragma once

#include <cstdint>

#include <brindle/export.h>
#include <brindle/values.h>

namespace brindle {

// "Rock" for 17. Empty for a number without a name: 123, and 148 and above.
[[nodiscard]] BRINDLE_EXPORT String GenreName(std::uint8_t Genre);

}  // namespace brindle
