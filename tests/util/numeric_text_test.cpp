#include "util/numeric_text.h"

#include <cfenv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "support/raised_error.h"

namespace brindle {
namespace {

using test::error_number;

String text_of(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

TEST(NumericText, KnowsWhatIsANumber) {
    struct Case {
        const char16_t* text;
        bool numeric;
    };
    const Case cases[] = {
        {u"0", true},        {u"17", true},      {u"-17", true},     {u"+17", true},
        {u" 17 ", true},     {u"   17", true},   {u"1.5", true},     {u"1.", true},
        {u".5", true},       {u"-.5", true},     {u"1e3", true},     {u"1E3", true},
        {u"1e+3", true},     {u"1e-3", true},    {u"1.e3", true},    {u".5e0", true},
        {u"007", true},      {u"1e400", true},   {u"", false},       {u" ", false},
        {u".", false},       {u"-", false},      {u"+", false},      {u"-.", false},
        {u"e3", false},      {u".e3", false},    {u"1e", false},     {u"1e+", false},
        {u"1e3.5", false},   {u"1.2.3", false},  {u"1,5", false},    {u"1 2", false},
        {u"- 1", false},     {u"--1", false},    {u"+-1", false},    {u"1-", false},
        {u"3/12", false},    {u"abc", false},    {u"1a", false},     {u"0x10", false},
        {u"&H10", false},    {u"$1", false},     {u"inf", false},    {u"nan", false},
        {u"\t1", false},     {u"1\n", false},    {u"1 e3", false},   {u"1e 3", false},
        {u"\u00A01", false}, {u"\u0661", false}, {u"\uFF11", false}, {u"1e3 x", false},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(is_numeric(row.text), row.numeric) << testing::PrintToString(row.text);
    }
    EXPECT_FALSE(is_numeric(String(u"1\0", 2)));
}

constexpr std::int32_t kNoNumber = 13;
constexpr std::int32_t kTooLarge = 6;

struct LongCase {
    std::string text;
    std::int32_t value;
    std::int32_t error = 0;
};

TEST(NumericText, LongsAreRoundedOnTheDecimalValue) {
    const LongCase cases[] = {
        {"12.5", 12},
        {"13.5", 14},
        {"17.4", 17},
        {"0.5", 0},
        {"1.5", 2},
        {"2.5", 2},
        {"-0.5", 0},
        {"-1.5", -2},
        {"-2.5", -2},
        {"-2.51", -3},
        {"0.50000000000000000000000000001", 1},
        {"0.49999999999999999999999999999", 0},
        {"2.50000000000000000000000000000", 2},
        {"2.5000000000000000000000000000000000000000000000000000000000000001", 3},
        {"  42  ", 42},
        {"+7", 7},
        {"1e3", 1000},
        {"1.2345e2", 123},
        {"1.235e2", 124},
        {"25e-1", 2},
        {"35e-1", 4},
        {"5e-1", 0},
        {"51e-2", 1},
        {"5e-2", 0},
        {"9e-2", 0},
        {"1e-400", 0},
        {"0e400", 0},
        {"0.0e99999999999999999999", 0},
        {"1e-99999999999999999999", 0},
        {"-0", 0},
        {"2147483647", 2147483647},
        {"2147483647.4999", 2147483647},
        {"2147483647.5", 0, kTooLarge},
        {"2147483648", 0, kTooLarge},
        {"-2147483648", std::numeric_limits<std::int32_t>::min()},
        {"-2147483648.5", std::numeric_limits<std::int32_t>::min()},
        {"-2147483648.51", 0, kTooLarge},
        {"-2147483649", 0, kTooLarge},
        {"1e400", 0, kTooLarge},
        {"1e99999999999999999999", 0, kTooLarge},
        {"18446744073709551616", 0, kTooLarge},  // 2^64, which is 0 in 64 bits
        {"0." + std::string(1000, '0') + "15e1001", 2},
        {std::string(1000, '0') + "15", 15},
        {"15" + std::string(1000, '0') + "e-1001", 2},
        {"25" + std::string(1000, '0') + "e-1001", 2},
        {"25" + std::string(999, '0') + "1e-1001", 3},
        {"", 0, kNoNumber},
        {"abc", 0, kNoNumber},
        {"3/12", 0, kNoNumber},
    };
    for (const LongCase& row : cases) {
        std::int32_t value = 0;
        EXPECT_EQ(error_number([&] { value = to_long(text_of(row.text)); }), row.error) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
}

TEST(NumericText, IntegersHaveSixteenBits) {
    const LongCase cases[] = {
        {"1999", 1999},           {"32767", 32767},        {"32767.5", 0, kTooLarge},
        {"-32768", -32768},       {"-32768.5", -32768},    {"32768", 0, kTooLarge},
        {"-32769", 0, kTooLarge}, {"1e400", 0, kTooLarge}, {"Rock", 0, kNoNumber},
    };
    for (const LongCase& row : cases) {
        std::int32_t value = 0;
        EXPECT_EQ(error_number([&] { value = to_integer(text_of(row.text)); }), row.error)
            << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
}

TEST(NumericText, BytesHaveEightBitsAndNoSign) {
    const LongCase cases[] = {
        {"0", 0},
        {"17.4", 17},
        {"255", 255},
        {"255.4", 255},
        {"-0.5", 0},
        {"255.5", 0, kTooLarge},
        {"256", 0, kTooLarge},
        {"-1", 0, kTooLarge},
        {"-0.6", 0, kTooLarge},
        {"Blues", 0, kNoNumber},
    };
    for (const LongCase& row : cases) {
        std::int32_t value = 0;
        EXPECT_EQ(error_number([&] { value = to_byte(text_of(row.text)); }), row.error) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
}

TEST(NumericText, DoublesAreTheNearest) {
    struct Case {
        std::string text;
        double value;
    };
    const Case cases[] = {
        {"0", 0.0},
        {"1.5", 1.5},
        {" -2.25e1 ", -22.5},
        {"+.5", 0.5},
        {"5.", 5.0},
        {"0.1", 0.1},
        {"-0.3", -0.3},
        {"-12.345", -12.345},
        {"0.000001", 1e-6},
        {"0.0000001", 1e-7},
        {"123456789.012345", 123456789.012345},
        {"1234567890.0123456", 1234567890.0123456},
        {"-0.00", 0.0},
        {"-17", -17.0},
        {"123456789012345678", 123456789012345680.0},
        {"9007199254740993", 9007199254740992.0},  // 2^53 + 1 lies halfway
        {"9007199254740993.0000000000000000000000000000001", 9007199254740994.0},
        {"1.7976931348623157e308", std::numeric_limits<double>::max()},
        {"4.9406564584124654e-324", std::numeric_limits<double>::denorm_min()},
        {"1e-400", 0.0},
        {"-1e-400", 0.0},
        {"1e-330", 0.0},
        {"1e-99999999999999999999", 0.0},
        {"0e99999999999999999999", 0.0},
        {"1" + std::string(500, '0') + "e-500", 1.0},
        {"0." + std::string(700'000, '0') + "125e700000", 0.125},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(to_double(text_of(row.text)), row.value) << row.text.substr(0, 60);
    }
}

TEST(NumericText, DoublesThatAreTooLargeOrNoneAreErrors) {
    for (const char* text : {"1e309", "-1e309", "1.7976931348623159e308", "1e400", "1e401",
                             "1e99999999999999999999"}) {
        EXPECT_EQ(error_number([&] { (void)to_double(text_of(text)); }), kTooLarge) << text;
    }
    EXPECT_EQ(error_number([&] { (void)to_double(text_of("1" + std::string(400, '0'))); }),
              kTooLarge);
    for (const char* text : {"", "abc", "1,5", "inf", "nan", "0x1p3"}) {
        EXPECT_EQ(error_number([&] { (void)to_double(text_of(text)); }), kNoNumber) << text;
    }
}

TEST(NumericText, DoublesAreRoundedHalvesToEven) {
    struct Case {
        double value;
        std::int32_t rounded;
    };
    const Case cases[] = {
        {0.0, 0},
        {0.5, 0},
        {1.5, 2},
        {2.5, 2},
        {-0.5, 0},
        {-1.5, -2},
        {-2.5, -2},
        {2.51, 3},
        {-2.51, -3},
        {0.49999999999999994, 0},
        {2147483647.4, 2147483647},
        {-2147483648.5, std::numeric_limits<std::int32_t>::min()},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(round_to_long(row.value), row.rounded) << row.value;
    }
    for (const double value :
         {2147483647.5, 2147483648.0, -2147483648.75, -2147483649.0, 1e300, -1e300,
          std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(error_number([&] { (void)round_to_long(value); }), kTooLarge) << value;
    }
}

TEST(NumericText, RoundingIgnoresTheModeThatTheHostHasSet) {
    ASSERT_EQ(std::fesetround(FE_UPWARD), 0);
    const std::int32_t rounded = round_to_long(2.25);
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(rounded, 2);
}

TEST(NumericText, NumbersBecomePlainDecimals) {
    EXPECT_EQ(to_text(0), u"0");
    EXPECT_EQ(to_text(std::numeric_limits<std::int32_t>::max()), u"2147483647");
    EXPECT_EQ(to_text(std::numeric_limits<std::int32_t>::min()), u"-2147483648");
    EXPECT_EQ(to_text(1.5), u"1.5");
    EXPECT_EQ(to_text(-0.1), u"-0.1");
    EXPECT_EQ(to_text(3.0), u"3");
    EXPECT_EQ(to_text(0.0), u"0");
    EXPECT_EQ(to_text(-0.0), u"0");
    EXPECT_EQ(to_text(1e15), u"1000000000000000");
    EXPECT_EQ(to_text(0.00001), u"0.00001");
    EXPECT_EQ(to_text(1.0 / 3.0), u"0.3333333333333333");
    EXPECT_EQ(to_text(5e-324), u"0." + String(323, u'0') + u"5");
}

TEST(NumericText, WhatIsNoNumberHasNoText) {
    EXPECT_EQ(error_number([] { (void)to_text(std::nan("")); }), kTooLarge);
    EXPECT_EQ(error_number([] { (void)to_text(std::numeric_limits<double>::infinity()); }),
              kTooLarge);
}

TEST(NumericText, EveryVariantHasAText) {
    EXPECT_EQ(to_text(Variant(Empty{})), u"");
    EXPECT_EQ(to_text(Variant(true)), u"-1");
    EXPECT_EQ(to_text(Variant(false)), u"0");
    EXPECT_EQ(to_text(Variant(std::int16_t{-300})), u"-300");
    EXPECT_EQ(to_text(Variant(std::int32_t{70000})), u"70000");
    EXPECT_EQ(to_text(Variant(-2.5)), u"-2.5");
    EXPECT_EQ(to_text(Variant(String(u"a\0b", 3))), String(u"a\0b", 3));
}

RC_GTEST_PROP(NumericText, LongsComeBack, (std::int32_t value)) {
    RC_ASSERT(to_long(to_text(value)) == value);
}

RC_GTEST_PROP(NumericText, DoublesComeBackWithoutAnExponent, (std::uint64_t bits)) {
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    RC_PRE(std::isfinite(value));
    const String text = to_text(value);
    RC_ASSERT(text.find_first_of(u"eE") == String::npos);
    RC_ASSERT(to_double(text) == value);
}

// A decimal with `places` of its digits after the point, rounded in whole numbers.
std::int64_t rounded(std::int64_t digits, int places) {
    std::int64_t power = 1;
    for (int i = 0; i < places; ++i) {
        power *= 10;
    }
    const std::int64_t whole = digits / power;
    const std::int64_t rest = digits % power;
    const bool up = 2 * rest > power || (2 * rest == power && whole % 2 != 0);
    return up ? whole + 1 : whole;
}

RC_GTEST_PROP(NumericText, DecimalsOfAnyFormAreRoundedAlike, ()) {
    // Digits near halves as often as others.
    const auto digits = *rc::gen::oneOf(rc::gen::inRange<std::int64_t>(0, 100'000'000),
                                        rc::gen::map(rc::gen::inRange<std::int64_t>(0, 2'000'000),
                                                     [](std::int64_t half) { return half * 50; }));
    const auto places = *rc::gen::inRange(0, 8);
    const auto zeros = *rc::gen::inRange(0, 6);
    const auto decimals = *rc::gen::inRange(0, 30);

    std::string mantissa =
        std::to_string(digits) + std::string(static_cast<std::size_t>(zeros), '0');
    const auto count = static_cast<std::size_t>(decimals);
    if (mantissa.size() < count) {
        mantissa.insert(0, count - mantissa.size(), '0');
    }
    mantissa.insert(mantissa.size() - count, ".");
    const std::string text = mantissa + "e" + std::to_string(decimals - places - zeros);
    RC_ASSERT(to_long(text_of(text)) == rounded(digits, places));
    RC_ASSERT(to_long(text_of("-" + text)) == -rounded(digits, places));
}

}  // namespace
}  // namespace brindle
