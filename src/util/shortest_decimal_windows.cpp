// std::to_chars brings 180 KiB of tables with it, a third of the whole DLL. One number now and then
// is as well found by trying how many digits it takes.
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "util/shortest_decimal.h"

namespace brindle {
namespace {

constexpr int kMaxDigits = 17;
// From here on every double is a whole number.
constexpr double kAllWhole = 9007199254740992.0;

// 0.d1d2d3... times ten to the exponent.
struct Decimal {
    std::string digits;
    int exponent;
};

// Nearest to `value` with that many digits. The decimal point, which a host's locale may have
// changed, is no digit.
Decimal rounded(double value, int digits) {
    char text[64];
    static_cast<void>(std::snprintf(text, sizeof text, "%.*e", digits - 1, value));
    Decimal decimal{{}, 0};
    const char* at = text;
    for (; *at != 'e'; ++at) {
        if (*at >= '0' && *at <= '9') {
            decimal.digits.push_back(*at);
        }
    }
    decimal.exponent = std::atoi(at + 1) + 1;  // NOLINT(cert-err34-c): our own text
    return decimal;
}

double value_of(const Decimal& decimal) {
    const std::string text = "0." + decimal.digits + "e" + std::to_string(decimal.exponent);
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

// The next decimal of as many digits, upwards or downwards.
Decimal neighbour(Decimal decimal, bool upwards) {
    const char last = upwards ? '9' : '0';
    const char first = upwards ? '0' : '9';
    for (auto digit = decimal.digits.rbegin(); digit != decimal.digits.rend(); ++digit) {
        if (*digit != last) {
            *digit = static_cast<char>(*digit + (upwards ? 1 : -1));
            return decimal;
        }
        *digit = first;
    }
    // 9.99 became 0.00: one digit more in front.
    decimal.digits.insert(decimal.digits.begin(), '1');
    decimal.digits.pop_back();
    ++decimal.exponent;
    return decimal;
}

Decimal shortest(double value) {
    for (int digits = 1; digits < kMaxDigits; ++digits) {
        Decimal nearest = rounded(value, digits);
        const double read = value_of(nearest);
        if (read == value) {
            return nearest;
        }
        // At a power of two there is more room above the number than below.
        Decimal other = neighbour(nearest, read < value);
        if (value_of(other) == value) {
            return other;
        }
    }
    return rounded(value, kMaxDigits);
}

std::string placed(const Decimal& decimal) {
    const auto count = static_cast<int>(decimal.digits.size());
    if (decimal.exponent <= 0) {
        return "0." + std::string(static_cast<std::size_t>(-decimal.exponent), '0') +
               decimal.digits;
    }
    if (decimal.exponent >= count) {
        return decimal.digits +
               std::string(static_cast<std::size_t>(decimal.exponent - count), '0');
    }
    const auto whole = static_cast<std::size_t>(decimal.exponent);
    return decimal.digits.substr(0, whole) + "." + decimal.digits.substr(whole);
}

}  // namespace

std::string shortest_decimal(double value) {
    const double size = std::fabs(value);
    const std::string sign = value < 0 ? "-" : "";
    if (size >= kAllWhole) {
        char text[512];
        static_cast<void>(std::snprintf(text, sizeof text, "%.0f", size));
        return sign + text;
    }
    return sign + placed(shortest(size));
}

}  // namespace brindle
