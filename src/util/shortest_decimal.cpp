#include "util/shortest_decimal.h"

#include <charconv>
#include <iterator>

namespace brindle {

std::string shortest_decimal(double value) {
    // Longest is the smallest number: sign, "0.", 323 zeros and up to 17 digits.
    char text[352];
    const std::to_chars_result result =
        std::to_chars(std::begin(text), std::end(text), value, std::chars_format::fixed);
    return {std::begin(text), result.ptr};
}

}  // namespace brindle
