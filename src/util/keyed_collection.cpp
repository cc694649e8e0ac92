#include <utility>

#include <brindle/error.h>
#include <brindle/keyed_collection.h>

#include "util/hash_index.h"

namespace brindle {

KeyedCollection::KeyedCollection() : index_(std::make_unique<HashIndex>()) {}

KeyedCollection::~KeyedCollection() = default;

void KeyedCollection::Remove(std::u16string_view key) {
    const std::size_t entry = find(key);
    if (entry == HashIndex::kNotFound) {
        throw Error(RuntimeError::InvalidCall);
    }
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(entry));
    index_->remove(entry);
}

void KeyedCollection::Add(Variant item, const String& key) {
    append(key, std::make_unique<Variant>(std::move(item)));
}

void KeyedCollection::AddKey(std::u16string_view key) {
    append(key, nullptr);
}

Variant KeyedCollection::Item(std::int32_t position) const {
    if (position < 1 || position > Count()) {
        throw Error(RuntimeError::SubscriptOutOfRange);
    }
    const Entry& entry = entries_[static_cast<std::size_t>(position) - 1];
    return entry.item ? *entry.item : Variant(entry.key);
}

Variant KeyedCollection::Item(std::u16string_view key) const {
    const std::size_t entry = find(key);
    if (entry == HashIndex::kNotFound) {
        throw Error(RuntimeError::InvalidCall);
    }
    return Item(static_cast<std::int32_t>(entry + 1));
}

bool KeyedCollection::Exists(std::u16string_view key) const noexcept {
    return find(key) != HashIndex::kNotFound;
}

std::int32_t KeyedCollection::Count() const noexcept {
    return static_cast<std::int32_t>(entries_.size());
}

std::size_t KeyedCollection::find(std::u16string_view key) const noexcept {
    return index_->find(TextHash::of(key),
                        [&](std::size_t entry) { return entries_[entry].key == key; });
}

void KeyedCollection::append(std::u16string_view key, std::unique_ptr<Variant> item) {
    if (Exists(key)) {
        throw Error(RuntimeError::KeyAlreadyExists);
    }
    index_->make_room();
    entries_.push_back({String(key), std::move(item)});
    index_->add(TextHash::of(key), entries_.size() - 1);
}

}  // namespace brindle
