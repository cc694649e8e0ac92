#include "bridges/custom_text.h"

#include <algorithm>

namespace brindle::host {

namespace {

char16_t in_capitals(char16_t unit) {
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - u'a' + u'A') : unit;
}

}  // namespace

bool is_same_name(std::u16string_view one, std::u16string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char16_t a, char16_t b) { return in_capitals(a) == in_capitals(b); });
}

std::vector<const TagText*> texts_named(const TagFacts& facts, std::u16string_view name) {
    std::vector<const TagText*> texts;
    for (const TagText& text : facts.texts) {
        if (text.id == u"TXXX" && is_same_name(text.description, name)) {
            texts.push_back(&text);
        }
    }
    return texts;
}

std::optional<String> custom_text(const TagFacts& facts, std::u16string_view name) {
    if (auto exact = facts.custom(name)) {
        return exact;
    }
    const auto texts = texts_named(facts, name);
    return texts.empty() ? std::nullopt : std::optional(texts.front()->text());
}

}  // namespace brindle::host
