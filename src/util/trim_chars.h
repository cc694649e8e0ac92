#pragma once

#include <cstdint>

#include <brindle/values.h>

namespace brindle {

// How the members of a character set are compared with a text.
inline constexpr std::int32_t kBinaryCompare = 0;
inline constexpr std::int32_t kTextCompare = 1;  // upper and lower case are the same

// `Text` without the characters of `CharSet` at both ends; characters inside are never touched.
[[nodiscard]] String TrimChars(String Text, const String& CharSet, std::int32_t Compare);

}  // namespace brindle
