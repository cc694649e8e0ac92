#include "id3v2/custom_fields.h"

#include <algorithm>

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

std::size_t CustomFields::locate(std::u16string_view name) const {
    const std::span<const Field> first = fields_.first_block();
    if (fields_.size() == first.size()) {
        const auto field = std::find_if(first.begin(), first.end(), [&](const Field& candidate) {
            return candidate.name.size() == name.size() && candidate.name == name;
        });
        return field == first.end() ? HashIndex::kNotFound
                                    : static_cast<std::size_t>(field - first.begin());
    }
    const auto hash = [this](std::size_t entry) { return hash_of(fields_[entry].name); };
    for (; indexed_ < fields_.size(); ++indexed_) {
        const StoredText& added = fields_[indexed_].name;
        const auto is_same = [&](std::size_t entry) { return same(fields_[entry].name, added); };
        if (index_.find(hash(indexed_), is_same) == HashIndex::kNotFound) {
            index_.make_room(hash);
            index_.add(hash(indexed_), indexed_);
        }
    }
    return index_.find(TextHash::of(name),
                       [&](std::size_t entry) { return fields_[entry].name == name; });
}

void CustomFields::set(std::u16string_view name, std::u16string_view value) {
    const std::size_t at = locate(name);
    if (at == HashIndex::kNotFound) {
        fields_.push_back({StoredText(name), StoredText(value)});
    } else {
        fields_[at].value = StoredText(value);
    }
}

const StoredText* CustomFields::find(std::u16string_view name) const {
    const std::size_t at = locate(name);
    return at == HashIndex::kNotFound ? nullptr : &fields_[at].value;
}

}  // namespace brindle
