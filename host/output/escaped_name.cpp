#include "output/escaped_name.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include <brindle/text.h>

namespace brindle::host {

namespace {

constexpr std::string_view kEscape = "\\udc";
constexpr std::string_view kBackslash = "\\\\";
constexpr std::size_t kEscapeLength = 6;
constexpr int kHexadecimal = 16;

// What from_utf8() makes of a byte that is no UTF-8, unless it follows a high surrogate.
constexpr bool is_stray_byte(char16_t unit) {
    return unit >= 0xDC80 && unit <= 0xDCFF;
}

constexpr bool is_high_surrogate(char16_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

}  // namespace

std::string escaped_name(std::string_view name) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    const String units = from_utf8(name);
    std::string escaped;
    String valid;
    const auto append_valid = [&] {
        escaped += to_utf8(valid);
        valid.clear();
    };
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i];
        if (is_stray_byte(unit) && !(i > 0 && is_high_surrogate(units[i - 1]))) {
            append_valid();
            escaped += kEscape;
            escaped += kDigits[(unit >> 4) & 0xF];
            escaped += kDigits[unit & 0xF];
        } else {
            valid.append(unit == u'\\' ? 2 : 1, unit);
        }
    }
    append_valid();
    return escaped;
}

std::optional<std::string> unescaped_name(std::string_view escaped) {
    std::string name;
    while (!escaped.empty()) {
        if (escaped.front() != '\\') {
            name += escaped.front();
            escaped.remove_prefix(1);
        } else if (escaped.starts_with(kBackslash)) {
            name += '\\';
            escaped.remove_prefix(kBackslash.size());
        } else {
            const std::string_view digits =
                escaped.substr(0, kEscapeLength).substr(std::min(kEscape.size(), escaped.size()));
            unsigned byte = 0;
            const auto [end, error] =
                std::from_chars(digits.data(), digits.data() + digits.size(), byte, kHexadecimal);
            if (!escaped.starts_with(kEscape) || digits.size() != 2 || error != std::errc() ||
                end != digits.data() + digits.size() || byte < 0x80) {
                return std::nullopt;
            }
            name += static_cast<char>(byte);
            escaped.remove_prefix(kEscapeLength);
        }
    }
    return name;
}

}  // namespace brindle::host
