// Exact arithmetic for durations: whole numbers and decimals with four places, in 64-bit integers.
#pragma once

#include <cstdint>

namespace brindle {

// Four decimal places: a value of 26.1224 is kept as 261224.
inline constexpr std::int64_t kDecimalScale = 10'000;

// numerator / denominator to the nearest whole number, halves to even. Error 11 for a denominator
// of 0.
[[nodiscard]] std::int64_t divide_half_even(std::int64_t numerator, std::int64_t denominator);

// Error 6 when the value is outside 32 bits, as in every computed 32-bit field.
[[nodiscard]] std::int32_t checked_long(std::int64_t value);

}  // namespace brindle
