#include "util/wildcard.h"

#include <cstddef>

namespace brindle {

bool has_wildcard(std::u16string_view pattern) noexcept {
    return pattern.find_first_of(u"*?") != std::u16string_view::npos;
}

// The text between two "*" matches best at its first match, so only the last "*" ever has to be
// extended: time is at most pattern length times name length.
bool matches_wildcard(std::u16string_view pattern, std::u16string_view name) noexcept {
    std::size_t p = 0;
    std::size_t n = 0;
    std::size_t after_star = std::u16string_view::npos;
    std::size_t star_end = 0;  // where in the name the run of that "*" ends
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            after_star = ++p;
            star_end = n;
        } else if (p < pattern.size() && (pattern[p] == u'?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (after_star != std::u16string_view::npos) {
            p = after_star;
            n = ++star_end;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(u'*', p) == std::u16string_view::npos;
}

}  // namespace brindle
