// Numbers as text, the same on every machine: no locale decides what a stored field means.
#pragma once

#include <cstdint>
#include <string_view>

#include <brindle/values.h>

#include "util/skip_errors.h"

namespace brindle {

// Numeric text is optional blanks, an optional sign, decimal digits with an optional ".", an
// optional exponent (e or E, optional sign, digits), at least one digit in the mantissa, optional
// blanks, and nothing else.
[[nodiscard]] bool is_numeric(std::u16string_view text) noexcept;

// Whole numbers: rounded to nearest, halves to even, on the decimal value itself, however many
// digits it has. Error 13 when the text is not numeric, 6 when the result does not fit.
[[nodiscard]] std::int32_t to_long(std::u16string_view text);
[[nodiscard]] std::int16_t to_integer(std::u16string_view text);
[[nodiscard]] std::uint8_t to_byte(std::u16string_view text);
// The nearest double; an underflow reads as 0, an overflow is error 6, other text error 13.
[[nodiscard]] double to_double(std::u16string_view text);
// A double rounded to a whole number, halves to even. Error 6 when it does not fit.
[[nodiscard]] std::int32_t round_to_long(double value);

[[nodiscard]] String to_text(std::int32_t value);
// The shortest decimal text that reads back as the same double; never an exponent. Error 6 for
// what is no number or infinite: no decimal text means it.
[[nodiscard]] String to_text(double value);
// Empty is "", a Boolean "-1" or "0".
[[nodiscard]] String to_text(const Variant& value);

// What `convert` makes of a text; 0 where it is no number, or none that fits. Most files lack most
// fields, and an error for each of them would take longer than reading the file.
template <typename Number, typename Convert>
[[nodiscard]] Number number_or_0(std::u16string_view text, Convert convert) {
    Number number{};
    if (!text.empty()) {
        skip_errors([&] { number = convert(text); });
    }
    return number;
}

}  // namespace brindle
