#include "util/fixed_decimal.h"

#include <limits>

#include <brindle/error.h>

namespace brindle {
namespace {

// Also right for the smallest number, which has no positive counterpart.
constexpr std::uint64_t magnitude(std::int64_t value) {
    return value < 0 ? std::uint64_t{0} - static_cast<std::uint64_t>(value)
                     : static_cast<std::uint64_t>(value);
}

}  // namespace

std::int64_t divide_half_even(std::int64_t numerator, std::int64_t denominator) {
    if (denominator == 0) {
        throw Error(RuntimeError::DivisionByZero);
    }
    if (numerator == std::numeric_limits<std::int64_t>::min() && denominator == -1) {
        throw Error(RuntimeError::Overflow);
    }
    const std::int64_t quotient = numerator / denominator;
    const std::uint64_t rest = magnitude(numerator % denominator);
    const std::uint64_t rest_to_next = magnitude(denominator) - rest;
    const bool odd = quotient % 2 != 0;
    if (rest < rest_to_next || (rest == rest_to_next && !odd)) {
        return quotient;
    }
    const bool negative = (numerator < 0) != (denominator < 0);
    return quotient + (negative ? -1 : 1);
}

std::int32_t checked_long(std::int64_t value) {
    if (value < std::numeric_limits<std::int32_t>::min() ||
        value > std::numeric_limits<std::int32_t>::max()) {
        throw Error(RuntimeError::Overflow);
    }
    return static_cast<std::int32_t>(value);
}

}  // namespace brindle
