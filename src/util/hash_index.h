// Finds entries of a list by their key without keeping a second copy of the keys.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace brindle {

// FNV-1a over UTF-16 units, one at a time, so that text which is stored in another form can be
// hashed as it is read.
//
// Keys come from files. So the hash begins with something that differs from process to process:
// otherwise a file could choose its names such that all of them meet in one bucket.
class TextHash {
public:
    void add(char16_t unit) noexcept { hash_ = (hash_ ^ unit) * kPrime; }
    [[nodiscard]] std::uint32_t value() const noexcept {
        // Spread over all bits, since the low ones choose the bucket.
        const std::uint64_t spread = (hash_ ^ (hash_ >> 33U)) * kSpread;
        return static_cast<std::uint32_t>(spread >> 32U);
    }
    [[nodiscard]] static std::uint32_t of(std::u16string_view text) noexcept {
        TextHash hash;
        for (const char16_t unit : text) {
            hash.add(unit);
        }
        return hash.value();
    }

private:
    static constexpr std::uint64_t kOffsetBasis = 0xCBF2'9CE4'8422'2325;
    static constexpr std::uint64_t kPrime = 0x100'0000'01B3;
    static constexpr std::uint64_t kSpread = 0xFF51'AFD7'ED55'8CCD;

    // Where the library lies in memory is not known beforehand.
    static inline const char kPlace = 0;
    std::uint64_t hash_ = kOffsetBasis ^ reinterpret_cast<std::uintptr_t>(&kPlace);
};

// Open addressing with linear probing; holds the hash and number of each entry. The owner of the
// list compares the keys.
class HashIndex {
public:
    static constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

    // The entry for which `is_key(entry)` holds among those of that hash.
    template <typename IsKey>
    [[nodiscard]] std::size_t find(std::uint32_t hash, IsKey is_key) const noexcept {
        if (buckets_.empty()) {
            return kNotFound;
        }
        for (std::size_t at = home(hash); is_used(at); at = next(at)) {
            const std::size_t entry = buckets_[at].entry_plus_1 - 1U;
            if (buckets_[at].hash == hash && is_key(entry)) {
                return entry;
            }
        }
        return kNotFound;
    }

    // Before an entry is added to the list: all the memory that its add() will need.
    void make_room() {
        if ((used_ + 1) * 4 <= buckets_.size() * 3) {
            return;
        }
        std::vector<Bucket> old(buckets_.empty() ? kFewest : buckets_.size() * 2);
        old.swap(buckets_);
        for (const Bucket& bucket : old) {
            if (bucket.entry_plus_1 != 0) {
                place(bucket);
            }
        }
    }
    // The key must not be there yet, and room for it must have been made.
    void add(std::uint32_t hash, std::size_t entry) noexcept {
        place({hash, static_cast<std::uint32_t>(entry + 1)});
        ++used_;
    }

    // Forgets the entry; those behind it in the list move up by one. Linear.
    void remove(std::size_t entry) noexcept {
        std::size_t hole = 0;
        for (std::size_t at = 0; at < buckets_.size(); ++at) {
            if (buckets_[at].entry_plus_1 == entry + 1) {
                hole = at;
            } else if (buckets_[at].entry_plus_1 > entry + 1) {
                --buckets_[at].entry_plus_1;
            }
        }
        buckets_[hole] = {};
        --used_;
        // Whoever stands behind the hole may have been pushed there by it.
        for (std::size_t at = next(hole); is_used(at); at = next(at)) {
            const Bucket moved = buckets_[at];
            buckets_[at] = {};
            place(moved);
        }
    }

private:
    struct Bucket {
        std::uint32_t hash = 0;
        std::uint32_t entry_plus_1 = 0;  // 0: free
    };
    static constexpr std::size_t kFewest = 32;

    [[nodiscard]] std::size_t home(std::uint32_t hash) const noexcept {
        return hash & (buckets_.size() - 1);
    }
    [[nodiscard]] std::size_t next(std::size_t at) const noexcept {
        return (at + 1) & (buckets_.size() - 1);
    }
    [[nodiscard]] bool is_used(std::size_t at) const noexcept {
        return buckets_[at].entry_plus_1 != 0;
    }
    void place(Bucket bucket) noexcept {
        std::size_t at = home(bucket.hash);
        while (is_used(at)) {
            at = next(at);
        }
        buckets_[at] = bucket;
    }

    std::vector<Bucket> buckets_;  // a power of two of them
    std::size_t used_ = 0;
};

}  // namespace brindle
