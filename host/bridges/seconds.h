// Points in time as text in seconds.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <brindle/values.h>

namespace brindle::host {

// `1.500`, for 0 and more milliseconds.
[[nodiscard]] std::string seconds_text(std::int64_t milliseconds);

// To the nearest millisecond. Blanks may be around the number, an exponent not in it. Nothing for
// any other text. What is beyond a million seconds, either way, is such a million and one.
[[nodiscard]] std::optional<std::int64_t> milliseconds_in(const String& seconds);

}  // namespace brindle::host
