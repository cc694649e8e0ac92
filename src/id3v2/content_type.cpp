#include "id3v2/content_type.h"

#include <brindle/genres.h>
#include <brindle/values.h>

#include "util/numeric_text.h"
#include "util/skip_errors.h"

namespace brindle {

ContentType read_content_type(const StoredText& value) {
    ContentType type{{}, value.share()};
    const std::size_t open = value.find(u'(');
    const std::size_t close = value.find(u')');
    if (open == value.size() || close == value.size() || close < open + 2) {
        return type;
    }
    String digits;
    for (std::size_t place = open + 1; place + 1 < close; ++place) {
        digits.push_back(value[place]);
    }
    if (!is_numeric(digits)) {
        return type;
    }
    skip_errors([&] {
        type.number = to_byte(digits);
        // Nothing, or a single character, after the parenthesis has no meaning of its own.
        const bool has_name = close + 2 < value.size();
        type.name = has_name ? value.share(close + 1) : StoredText(GenreName(*type.number));
    });
    return type;
}

}  // namespace brindle
