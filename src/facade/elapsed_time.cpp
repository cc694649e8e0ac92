#include "facade/elapsed_time.h"

#include <cstdlib>

#include "util/numeric_text.h"

namespace brindle {

namespace {

constexpr std::int32_t kMillisecondsPerSecond = 1000;
constexpr std::int32_t kSecondsPerMinute = 60;
constexpr std::size_t kFractionDigits = 2;

// Two digits at least; the sign comes on top.
String two_digits(std::int32_t number) {
    const String digits = to_text(std::abs(number));
    return (number < 0 ? u"-" : u"") + String(digits.size() < 2 ? u"0" : u"") + digits;
}

// The first two characters of the number, sign included: players have always shown 5 ms as 05.
std::int32_t cut_fraction(std::int32_t milliseconds) {
    return to_long(to_text(milliseconds).substr(0, kFractionDigits));
}

}  // namespace

String elapsed_time(std::int32_t milliseconds, eTimeDisplayStyle style) {
    const std::int32_t total_seconds = milliseconds / kMillisecondsPerSecond;
    String whole = two_digits(total_seconds / kSecondsPerMinute) + u":" +
                   two_digits(total_seconds % kSecondsPerMinute);
    String fraction = u"." + two_digits(cut_fraction(milliseconds % kMillisecondsPerSecond));
    switch (style) {
        case NoFractions:
            return whole;
        case OnlyFractions:
            return fraction;
        case ShowAll:
            return whole + fraction;
    }
    return {};
}

}  // namespace brindle
