#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include <brindle/error.h>
#include <brindle/keyed_collection.h>

#include "util/hash_index.h"
#include "util/packed_key.h"

namespace brindle {

struct KeyedCollection::Table {
    KeyPacker packer;
    std::vector<PackedKey> keys;
    // One for each key, null where the item is the key's own text. Empty while all of them are.
    std::vector<std::unique_ptr<Variant>> items;
    // Of the first keys; made when a search needs it.
    HashIndex index;

    [[nodiscard]] std::uint32_t hash_of(std::size_t entry) const noexcept {
        return TextHash::of(keys[entry]);
    }

    [[nodiscard]] std::size_t find(std::u16string_view text) noexcept {
        return find(packer.find(text));
    }

    [[nodiscard]] std::size_t find(PackedKey key) noexcept {
        if (key == kNoKey) {
            return HashIndex::kNotFound;
        }
        if (keys.size() > kFewEntries && index_all()) {
            return index.find(TextHash::of(key), [&](std::size_t e) { return keys[e] == key; });
        }
        const auto found = std::find(keys.begin(), keys.end(), key);
        return found == keys.end() ? HashIndex::kNotFound
                                   : static_cast<std::size_t>(found - keys.begin());
    }

    // False when memory is short; one can search without.
    [[nodiscard]] bool index_all() noexcept {
        const auto hash = [this](std::size_t entry) { return hash_of(entry); };
        try {
            while (index.size() < keys.size()) {
                index.make_room(hash);
                index.add(hash_of(index.size()), index.size());
            }
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }
};

KeyedCollection::KeyedCollection() : table_(std::make_unique<Table>()) {}

KeyedCollection::~KeyedCollection() = default;

void KeyedCollection::Remove(std::u16string_view key) {
    const std::size_t entry = table_->find(key);
    if (entry == HashIndex::kNotFound) {
        throw Error(RuntimeError::InvalidCall);
    }
    const auto at = static_cast<std::ptrdiff_t>(entry);
    table_->keys.erase(table_->keys.begin() + at);
    if (!table_->items.empty()) {
        table_->items.erase(table_->items.begin() + at);
    }
    table_->index.remove(entry, [this](std::size_t e) { return table_->hash_of(e); });
}

void KeyedCollection::Add(Variant item, const String& key) {
    if (Exists(key)) {
        throw Error(RuntimeError::KeyAlreadyExists);
    }
    auto kept = std::make_unique<Variant>(std::move(item));
    table_->items.resize(table_->keys.size());
    table_->items.push_back(std::move(kept));
    try {
        table_->keys.push_back(table_->packer.pack(key));
    } catch (...) {
        table_->items.pop_back();
        throw;
    }
}

void KeyedCollection::AddKey(std::u16string_view key) {
    const PackedKey packed = table_->packer.pack(key);
    if (table_->find(packed) != HashIndex::kNotFound) {
        throw Error(RuntimeError::KeyAlreadyExists);
    }
    append(packed);
}

void KeyedCollection::append(PackedKey short_key) {
    constexpr std::size_t kUsual = 16;
    if (table_->keys.capacity() == 0) {
        table_->keys.reserve(kUsual);
    }
    table_->keys.push_back(short_key);
    if (!table_->items.empty()) {
        try {
            table_->items.resize(table_->keys.size());
        } catch (...) {
            table_->keys.pop_back();
            throw;
        }
    }
}

Variant KeyedCollection::Item(std::int32_t position) const {
    if (position < 1 || position > Count()) {
        throw Error(RuntimeError::SubscriptOutOfRange);
    }
    const auto entry = static_cast<std::size_t>(position) - 1;
    const auto& items = table_->items;
    if (!items.empty() && items[entry]) {
        return *items[entry];
    }
    return table_->packer.text(table_->keys[entry]);
}

Variant KeyedCollection::Item(std::u16string_view key) const {
    const std::size_t entry = table_->find(key);
    if (entry == HashIndex::kNotFound) {
        throw Error(RuntimeError::InvalidCall);
    }
    return Item(static_cast<std::int32_t>(entry + 1));
}

bool KeyedCollection::Exists(std::u16string_view key) const noexcept {
    return table_->find(key) != HashIndex::kNotFound;
}

std::int32_t KeyedCollection::Count() const noexcept {
    return static_cast<std::int32_t>(table_->keys.size());
}

}  // namespace brindle
