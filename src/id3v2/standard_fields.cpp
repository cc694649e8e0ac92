#include "id3v2/standard_fields.h"

#include <utility>

namespace brindle {

namespace {

// Between two comments of one tag.
constexpr std::u16string_view kCommentSeparator = u"\r\n"sv;

}  // namespace

String StandardFieldTexts::get(StandardField field) const {
    const StoredText& stored = this->text(field);
    if (row_of(field).nuls == Nuls::Kept) {
        return stored.wide();
    }
    if (field != StandardField::Comment || more_comments_.empty()) {
        return stored.wide_without_nuls();
    }
    String lines = stored.wide_without_nuls();
    for (const StoredText& comment : more_comments_) {
        lines += kCommentSeparator;
        lines += comment.wide_without_nuls();
    }
    return lines;
}

void StandardFieldTexts::add_comment(StoredText text) {
    StoredText& first = this->text(StandardField::Comment);
    if (first.empty()) {
        first = std::move(text);
    } else {
        more_comments_.push_back(std::move(text));
    }
}

}  // namespace brindle
