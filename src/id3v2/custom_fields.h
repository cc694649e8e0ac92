// The custom fields of a tag by name.
#pragma once

#include <deque>
#include <string_view>

#include <brindle/values.h>

#include "id3v2/stored_text.h"
#include "util/hash_index.h"

namespace brindle {

// A map beside the frame store, so that a field is found without a search through all values.
// Names are compared exactly.
class CustomFields {
public:
    // A field as the reader finds it. A name seen before keeps its first value.
    void add_first(StoredText name, StoredText value);
    // Adds a field or replaces its value.
    void set(std::u16string_view name, std::u16string_view value);
    // Null when there is no such field.
    [[nodiscard]] const StoredText* find(std::u16string_view name) const noexcept;

private:
    struct Field {
        StoredText name;
        StoredText value;
    };

    [[nodiscard]] std::size_t locate(std::uint32_t hash, std::u16string_view name) const noexcept;
    void append(std::uint32_t hash, Field field);

    std::deque<Field> fields_;
    HashIndex index_;
};

// A tag's values are split at this character: a custom field's name from its value.
inline constexpr char16_t kSeparator = u'\0';

}  // namespace brindle
