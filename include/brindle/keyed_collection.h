// The ordered, keyed collection that holds the ids of a tag's frames.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string_view>

#include <brindle/export.h>
#include <brindle/values.h>

namespace brindle {

// A short key as one number (util/packed_key.h).
enum class PackedKey : std::uint64_t;

// Items under unique keys, in the order in which they were added. Keys are compared exactly.
//
// Looking up, adding and finding a duplicate take constant time; removing takes time linear in
// the number of entries. Positions count from 1.
class BRINDLE_EXPORT KeyedCollection {
public:
    KeyedCollection();
    KeyedCollection(const KeyedCollection&) = delete;
    KeyedCollection& operator=(const KeyedCollection&) = delete;
    ~KeyedCollection();

    // Removes the entry under `key`. Error 5 when there is none.
    void Remove(std::u16string_view key);
    // Appends `item` under `key`. Error 457 when the key is taken; the collection is unchanged
    // then.
    void Add(Variant item, const String& key);
    // The item at a position (error 9 outside 1..Count), or under a key (error 5 when missing).
    [[nodiscard]] Variant Item(std::int32_t position) const;
    [[nodiscard]] Variant Item(std::u16string_view key) const;
    [[nodiscard]] bool Exists(std::u16string_view key) const noexcept;
    [[nodiscard]] std::int32_t Count() const noexcept;

    // For loops over the items in their order. Adding and removing keep an iterator at its
    // position.
    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Variant;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = Variant;

        Iterator(const KeyedCollection& items, std::int32_t position) noexcept
            : items_(&items), position_(position) {}
        // Error 9 where the collection has become shorter.
        [[nodiscard]] Variant operator*() const { return items_->Item(position_); }
        Iterator& operator++() noexcept {
            ++position_;
            return *this;
        }
        Iterator operator++(int) noexcept {
            const Iterator before = *this;
            ++position_;
            return before;
        }
        [[nodiscard]] bool operator==(const Iterator& other) const noexcept {
            return position_ == other.position_;
        }

    private:
        const KeyedCollection* items_;
        std::int32_t position_;
    };
    [[nodiscard]] Iterator begin() const noexcept { return {*this, 1}; }
    [[nodiscard]] Iterator end() const noexcept { return {*this, Count() + 1}; }

    // Appends a key whose item is that same text, as frame ids are kept: one copy is held.
    void AddKey(std::u16string_view key);

private:
    friend class FrameStore;
    struct Table;

    // Appends a key of which it is known that it is new.
    void append(PackedKey short_key);

    std::unique_ptr<Table> table_;
};

}  // namespace brindle
