#include "id3v2/content_type.h"

#include <brindle/genres.h>
#include <brindle/values.h>

#include "util/numeric_text.h"
#include "util/skip_errors.h"

namespace brindle {

ContentType read_content_type(const StoredText& value) {
    ContentType type{{}, value.share()};
    const String text = value.wide();
    const std::size_t open = text.find(u'(');
    const std::size_t close = text.find(u')');
    if (open == String::npos || close == String::npos || close < open + 2) {
        return type;
    }
    const String digits = text.substr(open + 1, close - open - 2);
    if (!is_numeric(digits)) {
        return type;
    }
    skip_errors([&] {
        type.number = to_byte(digits);
        // Nothing, or a single character, behind the parenthesis says nothing of its own.
        const bool has_name = close + 2 < text.size();
        type.name = StoredText(has_name ? text.substr(close + 1) : GenreName(*type.number));
    });
    return type;
}

}  // namespace brindle
