// The custom fields of a tag by name.
#pragma once

#include <cstddef>
#include <string_view>
#include <utility>

#include <brindle/values.h>

#include "id3v2/stored_text.h"
#include "util/block_list.h"
#include "util/hash_index.h"

namespace brindle {

// A map beside the frame store, so that a field is found without a search through all values.
// Names are compared exactly.
class CustomFields {
public:
    [[nodiscard]] bool empty() const noexcept { return fields_.empty(); }
    // A field as the reader finds it. A name seen before keeps its first value.
    void add_first(StoredText name, StoredText value) {
        fields_.push_back({std::move(name), std::move(value)});
    }
    // Adds a field or replaces its value.
    void set(std::u16string_view name, std::u16string_view value);
    // Null when there is no such field.
    [[nodiscard]] const StoredText* find(std::u16string_view name) const;

private:
    struct Field {
        StoredText name;
        StoredText value;
    };
    [[nodiscard]] std::size_t locate(std::u16string_view name) const;

    BlockList<Field> fields_;  // of two fields of one name the first one counts
    // Made when a search needs it, of the first so many fields.
    mutable HashIndex index_;
    mutable std::size_t indexed_ = 0;
};

// A tag's values are split at this character: a custom field's name from its value.
inline constexpr char16_t kSeparator = u'\0';

}  // namespace brindle
