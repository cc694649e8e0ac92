#include "bridges/seconds.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

#include <brindle/text.h>

namespace brindle::host {

namespace {

constexpr std::int64_t kMillisecondsPerSecond = 1'000;

std::string without_blanks(const std::string& text) {
    constexpr const char* kBlanks = " \t";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::string::npos
               ? std::string()
               : text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

}  // namespace

std::string seconds_text(std::int64_t milliseconds) {
    constexpr std::size_t kPlaces = 3;
    const std::string rest = std::to_string(milliseconds % kMillisecondsPerSecond);
    return std::to_string(milliseconds / kMillisecondsPerSecond) + "." +
           std::string(kPlaces - rest.size(), '0') + rest;
}

std::optional<std::int64_t> milliseconds_in(const String& seconds) {
    constexpr double kMax = 1'000'001;
    const std::string text = without_blanks(to_utf8(seconds));
    if (text.find_first_not_of("-.0123456789") != std::string::npos) {
        return std::nullopt;  // "nan" and "inf" would be numbers, too
    }
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    if (error == std::errc::invalid_argument || last != end) {
        return std::nullopt;
    }
    if (error == std::errc::result_out_of_range) {
        number = text.front() == '-' ? -kMax : kMax;
    }
    return std::llround(std::clamp(number, -kMax, kMax) *
                        static_cast<double>(kMillisecondsPerSecond));
}

}  // namespace brindle::host
