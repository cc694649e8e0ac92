#include "id3v2/custom_fields.h"

#include <utility>

namespace brindle {

namespace {

std::uint32_t hash_of(const StoredText& text) noexcept {
    TextHash hash;
    for (std::size_t i = 0; i < text.size(); ++i) {
        hash.add(text[i]);
    }
    return hash.value();
}

bool same(const StoredText& a, const StoredText& b) noexcept {
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] != b[i]) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::size_t CustomFields::locate(std::uint32_t hash, std::u16string_view name) const noexcept {
    return index_.find(hash, [&](std::size_t entry) { return fields_[entry].name == name; });
}

void CustomFields::append(std::uint32_t hash, Field field) {
    index_.make_room();
    fields_.push_back(std::move(field));
    index_.add(hash, fields_.size() - 1);
}

void CustomFields::add_first(StoredText name, StoredText value) {
    const std::uint32_t hash = hash_of(name);
    const std::size_t at =
        index_.find(hash, [&](std::size_t entry) { return same(fields_[entry].name, name); });
    if (at == HashIndex::kNotFound) {
        append(hash, {std::move(name), std::move(value)});
    }
}

void CustomFields::set(std::u16string_view name, std::u16string_view value) {
    const std::uint32_t hash = TextHash::of(name);
    const std::size_t at = locate(hash, name);
    if (at == HashIndex::kNotFound) {
        append(hash, {StoredText(name), StoredText(value)});
    } else {
        fields_[at].value = StoredText(value);
    }
}

const StoredText* CustomFields::find(std::u16string_view name) const noexcept {
    const std::size_t at = locate(TextHash::of(name), name);
    return at == HashIndex::kNotFound ? nullptr : &fields_[at].value;
}

}  // namespace brindle
