#include "util/numeric_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <system_error>

#include <brindle/error.h>

#include "util/shortest_decimal.h"

namespace brindle {
namespace {

// No text is so long that its digits could outweigh an exponent beyond this.
constexpr std::int64_t kExponentLimit = 1'000'000'000'000'000;

// A numeric text taken apart: 0.DIGITS times ten to the power of `point`, with a sign.
struct Decimal {
    bool negative = false;
    std::u16string_view whole;     // the digits before the "."
    std::u16string_view fraction;  // and after it
    std::int64_t point = 0;        // number of these digits before the shifted "."

    [[nodiscard]] std::size_t size() const { return whole.size() + fraction.size(); }
    [[nodiscard]] int digit(std::size_t i) const {
        return (i < whole.size() ? whole[i] : fraction[i - whole.size()]) - u'0';
    }
};

constexpr bool is_digit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

// Takes what it is asked for from the front of a text.
class Scanner {
public:
    explicit Scanner(std::u16string_view text) : rest_(text) {}

    void skip_blanks() {
        take_while([](char16_t unit) { return unit == u' '; });
    }
    std::u16string_view take_digits() { return take_while(is_digit); }
    bool take(char16_t wanted) {
        if (rest_.empty() || rest_.front() != wanted) {
            return false;
        }
        rest_.remove_prefix(1);
        return true;
    }
    // True for "-".
    bool take_sign() {
        const bool negative = take(u'-');
        if (!negative) {
            take(u'+');
        }
        return negative;
    }
    [[nodiscard]] bool at_end() const { return rest_.empty(); }

private:
    template <typename Predicate>
    std::u16string_view take_while(Predicate belongs) {
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), belongs);
        const auto count = static_cast<std::size_t>(end - rest_.begin());
        const std::u16string_view taken = rest_.substr(0, count);
        rest_.remove_prefix(count);
        return taken;
    }

    std::u16string_view rest_;
};

std::optional<Decimal> parse(std::u16string_view text) noexcept {
    Scanner scanner(text);
    Decimal decimal;
    scanner.skip_blanks();
    decimal.negative = scanner.take_sign();
    decimal.whole = scanner.take_digits();
    if (scanner.take(u'.')) {
        decimal.fraction = scanner.take_digits();
    }
    if (decimal.size() == 0) {
        return std::nullopt;
    }
    std::int64_t exponent = 0;
    if (scanner.take(u'e') || scanner.take(u'E')) {
        const bool negative = scanner.take_sign();
        const std::u16string_view digits = scanner.take_digits();
        if (digits.empty()) {
            return std::nullopt;
        }
        for (const char16_t digit : digits) {
            exponent = std::min(exponent * 10 + (digit - u'0'), kExponentLimit);
        }
        exponent = negative ? -exponent : exponent;
    }
    scanner.skip_blanks();
    if (!scanner.at_end()) {
        return std::nullopt;
    }
    decimal.point = static_cast<std::int64_t>(decimal.whole.size()) + exponent;
    return decimal;
}

Decimal parse_or_raise(std::u16string_view text) {
    const std::optional<Decimal> decimal = parse(text);
    if (!decimal) {
        throw Error(RuntimeError::TypeMismatch);
    }
    return *decimal;
}

// The digits before the point; anything above `limit` is as good as `limit` + 1.
std::int64_t whole_part(const Decimal& decimal, std::int64_t limit) {
    std::int64_t value = 0;
    std::int64_t place = 0;
    for (; place < decimal.point && value <= limit; ++place) {
        const auto i = static_cast<std::size_t>(place);
        if (i >= decimal.size() && value == 0) {
            break;
        }
        value = value * 10 + (i < decimal.size() ? decimal.digit(i) : 0);
    }
    return std::min(value, limit + 1);
}

// -1, 0, 1: the digits after the point against one half.
int compare_with_half(const Decimal& decimal) {
    if (decimal.point < 0) {
        return -1;
    }
    if (decimal.point >= static_cast<std::int64_t>(decimal.size())) {
        return -1;
    }
    auto i = static_cast<std::size_t>(decimal.point);
    if (decimal.digit(i) != 5) {
        return decimal.digit(i) < 5 ? -1 : 1;
    }
    while (++i < decimal.size()) {
        if (decimal.digit(i) != 0) {
            return 1;
        }
    }
    return 0;
}

// A few digits, with a minus or not, as nearly all numbers of a tag are; none for any other text.
std::optional<std::int32_t> few_digits(std::u16string_view text) noexcept {
    constexpr std::size_t kFew = std::numeric_limits<std::int32_t>::digits10;
    const bool negative = !text.empty() && text.front() == u'-';
    const std::u16string_view digits = text.substr(negative ? 1 : 0);
    if (digits.empty() || digits.size() > kFew) {
        return std::nullopt;
    }
    std::int32_t value = 0;
    for (const char16_t digit : digits) {
        if (!is_digit(digit)) {
            return std::nullopt;
        }
        value = value * 10 + (digit - u'0');
    }
    return negative ? -value : value;
}

// As "1.5" is: a fraction of two whole numbers that a double holds exactly, so that it is rounded
// but once. None for any other text.
std::optional<double> short_decimal(const Decimal& decimal) noexcept {
    constexpr std::int64_t kPowers[] = {1, 10, 100, 1'000, 10'000, 100'000, 1'000'000};
    constexpr std::size_t kFew = std::numeric_limits<double>::digits10;
    if (decimal.size() > kFew || decimal.fraction.size() >= std::size(kPowers) ||
        decimal.point != static_cast<std::int64_t>(decimal.whole.size())) {
        return std::nullopt;
    }
    std::int64_t digits = 0;
    for (std::size_t i = 0; i < decimal.size(); ++i) {
        digits = digits * 10 + decimal.digit(i);
    }
    if (digits == 0) {
        return 0;  // of no sign
    }
    const auto value =
        static_cast<double>(digits) / static_cast<double>(kPowers[decimal.fraction.size()]);
    return decimal.negative ? -value : value;
}

template <typename Whole>
Whole in_range(std::int64_t value) {
    if (value < std::numeric_limits<Whole>::min() || value > std::numeric_limits<Whole>::max()) {
        throw Error(RuntimeError::Overflow);
    }
    return static_cast<Whole>(value);
}

template <typename Whole>
Whole to_whole(std::u16string_view text) {
    if (const std::optional<std::int32_t> value = few_digits(text)) {
        return in_range<Whole>(*value);
    }
    // Far above every type that this is for, far below what 64 bits hold.
    constexpr std::int64_t kLimit = std::int64_t{1} << 40;
    const Decimal decimal = parse_or_raise(text);
    std::int64_t value = whole_part(decimal, kLimit);
    const int half = compare_with_half(decimal);
    if (half > 0 || (half == 0 && value % 2 != 0)) {
        ++value;
    }
    return in_range<Whole>(decimal.negative ? -value : value);
}

String ascii_to_string(const char* first, const char* last) {
    return {first, last};
}

}  // namespace

bool is_numeric(std::u16string_view text) noexcept {
    return few_digits(text).has_value() || parse(text).has_value();
}

std::int32_t to_long(std::u16string_view text) {
    return to_whole<std::int32_t>(text);
}

std::int16_t to_integer(std::u16string_view text) {
    return to_whole<std::int16_t>(text);
}

std::uint8_t to_byte(std::u16string_view text) {
    return to_whole<std::uint8_t>(text);
}

double to_double(std::u16string_view text) {
    if (const std::optional<std::int32_t> value = few_digits(text)) {
        return *value;
    }
    // Well outside the powers of ten that a double has.
    constexpr std::int64_t kLargestPower = 400;
    const Decimal decimal = parse_or_raise(text);
    if (const std::optional<double> value = short_decimal(decimal)) {
        return *value;
    }
    std::size_t first = 0;
    while (first < decimal.size() && decimal.digit(first) == 0) {
        ++first;
    }
    const std::int64_t power = decimal.point - static_cast<std::int64_t>(first);
    if (first == decimal.size() || power < -kLargestPower) {
        return 0;
    }
    if (power > kLargestPower) {
        throw Error(RuntimeError::Overflow);
    }
    // In this form the exponent stays small for any text.
    std::string plain = "0.";
    plain.reserve(plain.size() + decimal.size() + std::string_view("e-400").size());
    for (std::size_t i = first; i < decimal.size(); ++i) {
        plain.push_back(static_cast<char>('0' + decimal.digit(i)));
    }
    plain += 'e';
    plain += std::to_string(power);
    double value = 0;
    const std::from_chars_result result =
        std::from_chars(plain.data(), plain.data() + plain.size(), value);
    if (result.ec == std::errc::result_out_of_range || std::isinf(value)) {
        if (power > 0) {
            throw Error(RuntimeError::Overflow);
        }
        return 0;
    }
    return decimal.negative ? -value : value;
}

std::int32_t round_to_long(double value) {
    constexpr double kBelow = -2147483649.0;
    constexpr double kAbove = 2147483648.0;
    // Written so that "not a number" is outside as well.
    if (!(value > kBelow && value < kAbove)) {
        throw Error(RuntimeError::Overflow);
    }
    // Not the library's rounding functions: they follow the mode that the host has set.
    const double floor = std::floor(value);
    const double rest = value - floor;
    auto whole = static_cast<std::int64_t>(floor);
    if (rest > 0.5 || (rest == 0.5 && whole % 2 != 0)) {
        ++whole;
    }
    if (whole < std::numeric_limits<std::int32_t>::min() ||
        whole > std::numeric_limits<std::int32_t>::max()) {
        throw Error(RuntimeError::Overflow);
    }
    return static_cast<std::int32_t>(whole);
}

String to_text(std::int32_t value) {
    char text[std::numeric_limits<std::int32_t>::digits10 + 3];
    const std::to_chars_result result = std::to_chars(std::begin(text), std::end(text), value);
    return ascii_to_string(text, result.ptr);
}

String to_text(double value) {
    if (!std::isfinite(value)) {
        throw Error(RuntimeError::Overflow);
    }
    if (value == 0) {
        return u"0";  // of either sign
    }
    const std::string text = shortest_decimal(value);
    return {text.begin(), text.end()};
}

String to_text(const Variant& value) {
    struct Visitor {
        String operator()(Empty) const { return {}; }
        String operator()(bool flag) const { return flag ? u"-1" : u"0"; }
        String operator()(std::int16_t number) const { return to_text(std::int32_t{number}); }
        String operator()(std::int32_t number) const { return to_text(number); }
        String operator()(double number) const { return to_text(number); }
        String operator()(const String& text) const { return text; }
    };
    return std::visit(Visitor{}, value);
}

}  // namespace brindle
