#include "util/trim_chars.h"

#include <algorithm>
#include <cstddef>

namespace brindle {
namespace {

// The capital letter of a small one. The letters of the code page are all that a tag can hold.
constexpr char16_t to_upper(char16_t unit) {
    constexpr char16_t kCaseStep = u'a' - u'A';
    if ((unit >= u'a' && unit <= u'z') ||
        (unit >= u'\u00E0' && unit <= u'\u00FE' && unit != u'\u00F7')) {
        return static_cast<char16_t>(unit - kCaseStep);
    }
    switch (unit) {
        case u'\u00FF':
            return u'\u0178';
        case u'\u0153':
            return u'\u0152';
        case u'\u0161':
            return u'\u0160';
        case u'\u017E':
            return u'\u017D';
        default:
            return unit;
    }
}

}  // namespace

String TrimChars(String Text, const String& CharSet, std::int32_t Compare) {
    const auto in_set = [&CharSet, Compare](char16_t unit) {
        return std::any_of(CharSet.begin(), CharSet.end(), [unit, Compare](char16_t member) {
            return unit == member ||
                   (Compare == kTextCompare && to_upper(unit) == to_upper(member));
        });
    };
    std::size_t end = Text.size();
    while (end > 0 && in_set(Text[end - 1])) {
        --end;
    }
    std::size_t begin = 0;
    while (begin < end && in_set(Text[begin])) {
        ++begin;
    }
    Text.erase(end);
    Text.erase(0, begin);
    return Text;
}

}  // namespace brindle
