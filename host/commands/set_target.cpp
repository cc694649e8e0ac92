#include "commands/set_target.h"

#include <algorithm>
#include <variant>

#include <brindle/text.h>

#include "bridges/custom_text.h"
#include "commands/row_edits.h"
#include "fields.h"

namespace brindle::host {

namespace {

bool consists_of(const String& text, const char16_t* characters) {
    return text.find_first_not_of(characters) == String::npos;
}

}  // namespace

SetTarget::SetTarget(const std::string& column) : column_(column) {
    const auto place = edit_column(column);
    is_point_ = place->field != nullptr && place->field->access.type == FieldType::Milliseconds;
    is_in_any_case_ = place->field == nullptr;
    name_ = place->field != nullptr ? String(place->field->custom_name) : place->custom_name;
}

bool SetTarget::has_name(const TagText& text) const {
    return text.id == u"TXXX" &&
           (is_in_any_case_ ? is_same_name(text.description, name_) : text.description == name_);
}

bool SetTarget::is_nothing(const String& text) const {
    return consists_of(text, is_point_ ? u" 0" : u" ");
}

bool SetTarget::is_set(const cMPEGHeader& header, const TagFacts& facts) const {
    const Variant value = header.CustomFieldRetrieve(name_);
    const auto* const text = std::get_if<String>(&value);
    return (text != nullptr && !is_nothing(*text)) ||
           std::any_of(facts.texts.begin(), facts.texts.end(), [&](const TagText& candidate) {
               return has_name(candidate) && !is_nothing(candidate.text());
           });
}

void remove_other_cases(const String& name, const TagFacts& facts, EditRow& row) {
    for (const TagText* text : texts_named(facts, name)) {
        const std::string column = "field:" + to_utf8(text->description);
        if (text->description != name &&
            std::find(row.removed.begin(), row.removed.end(), column) == row.removed.end()) {
            row.removed.push_back(column);
        }
    }
}

}  // namespace brindle::host
