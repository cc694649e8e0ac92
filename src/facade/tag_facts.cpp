#include <algorithm>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_facts.h>

#include "id3v2/cMP3ID3v2.h"
#include "id3v2/frame_text.h"

namespace brindle {

namespace {

template <typename Wanted>
std::optional<String> first_text(const TagFacts& facts, Wanted is_wanted) {
    const auto text = std::find_if(facts.texts.begin(), facts.texts.end(), is_wanted);
    return text == facts.texts.end() ? std::nullopt : std::optional(text->text());
}

}  // namespace

String TagText::text() const {
    return joined(values);
}

std::optional<String> TagFacts::text(std::u16string_view id) const {
    return first_text(*this, [&](const TagText& text) { return text.id == id; });
}

std::optional<String> TagFacts::custom(std::u16string_view name) const {
    return first_text(
        *this, [&](const TagText& text) { return text.id == u"TXXX" && text.description == name; });
}

std::optional<String> TagFacts::comment() const {
    return first_text(
        *this, [](const TagText& text) { return text.id == u"COMM" && text.description.empty(); });
}

TagFacts read_tag_facts(const cMPEGHeader& header) {
    return header.model_ ? header.model_->read_tag_facts() : TagFacts{};
}

ComparedTag compare_tag(const cMPEGHeader& header) {
    return header.model_ ? header.model_->compare_tag() : ComparedTag{};
}

}  // namespace brindle
