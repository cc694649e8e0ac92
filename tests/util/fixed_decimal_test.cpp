#include "util/fixed_decimal.h"

#include <limits>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "support/raised_error.h"

namespace brindle {
namespace {

using test::error_number;

constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();

TEST(FixedDecimal, DivisionRoundsHalvesToEven) {
    struct Case {
        std::int64_t numerator;
        std::int64_t denominator;
        std::int64_t quotient;
    };
    const Case cases[] = {
        {0, 7, 0},
        {7, 2, 4},                  // 3.5
        {5, 2, 2},                  // 2.5
        {1, 2, 0},                  // 0.5
        {3, 2, 2},                  // 1.5
        {-1, 2, 0},                 // -0.5
        {-3, 2, -2},                // -1.5
        {-5, 2, -2},                // -2.5
        {5, -2, -2},                // the same with the sign below
        {-7, -2, 4},                // 3.5
        {10, 3, 3},                 // 3.33
        {11, 3, 4},                 // 3.67
        {-11, 3, -4},               // -3.67
        {11'520'000, 441, 26'122},  // the length of a frame at 44,100 Hz: 26122.449
        {kLargest, 1, kLargest},
        {kSmallest, 1, kSmallest},
        {kSmallest, 2, kSmallest / 2},
        {kLargest, kLargest, 1},
        {1, kSmallest, 0},
        {kLargest, kSmallest, -1},
        {kSmallest, kSmallest, 1},
        {kSmallest / 2, kSmallest, 0},      // one half
        {kSmallest / 2 - 1, kSmallest, 1},  // a little more
    };
    for (const Case& row : cases) {
        EXPECT_EQ(divide_half_even(row.numerator, row.denominator), row.quotient)
            << row.numerator << " / " << row.denominator;
    }
}

TEST(FixedDecimal, WhatHasNoQuotientIsAnError) {
    EXPECT_EQ(error_number([] { (void)divide_half_even(1, 0); }), 11);
    EXPECT_EQ(error_number([] { (void)divide_half_even(0, 0); }), 11);
    EXPECT_EQ(error_number([] { (void)divide_half_even(kSmallest, -1); }), 6);
}

RC_GTEST_PROP(FixedDecimal, QuotientIsTheNearest, (std::int32_t numerator, std::int16_t divisor)) {
    RC_PRE(divisor != 0);
    const std::int64_t quotient = divide_half_even(numerator, divisor);
    const std::int64_t twice_off = 2 * (std::int64_t{numerator} - quotient * divisor);
    const std::int64_t limit = divisor < 0 ? -std::int64_t{divisor} : std::int64_t{divisor};
    RC_ASSERT(twice_off >= -limit && twice_off <= limit);
    if (twice_off == limit || twice_off == -limit) {
        RC_ASSERT(quotient % 2 == 0);
    }
}

TEST(FixedDecimal, LongsHaveThirtyTwoBits) {
    EXPECT_EQ(checked_long(2'147'483'647), 2'147'483'647);
    EXPECT_EQ(checked_long(-2'147'483'648), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(error_number([] { (void)checked_long(2'147'483'648); }), 6);
    EXPECT_EQ(error_number([] { (void)checked_long(-2'147'483'649); }), 6);
}

}  // namespace
}  // namespace brindle
