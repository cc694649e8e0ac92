#pragma once

#include <cstdint>

#include <brindle/values.h>

namespace brindle {

// The name of a genre number, as the last byte of an ID3v1 record and a content type "(n)" give it;
// empty for a number without a name.
[[nodiscard]] String GenreName(std::uint8_t Genre);

}  // namespace brindle
