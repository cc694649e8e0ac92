// Finds entries of a list by their key without keeping a second copy of the keys.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace brindle {

// FNV-1a over UTF-16 units, one at a time, so that text which is stored in another form can be
// hashed as it is read.
class TextHash {
public:
    void add(char16_t unit) noexcept { hash_ = (hash_ ^ unit) * 16777619U; }
    // The low bits choose the bucket: fold the better mixed high ones into them.
    [[nodiscard]] std::uint32_t value() const noexcept { return hash_ ^ (hash_ >> 15U); }
    [[nodiscard]] static std::uint32_t of(std::u16string_view text) noexcept {
        TextHash hash;
        for (const char16_t unit : text) {
            hash.add(unit);
        }
        return hash.value();
    }

private:
    std::uint32_t hash_ = 2166136261U;
};

// Open addressing with linear probing; holds the hash and number of each entry. The owner of the
// list compares the keys.
class HashIndex {
public:
    static constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

    // The entry for which `is_key(entry)` holds among those of that hash.
    template <typename IsKey>
    [[nodiscard]] std::size_t find(std::uint32_t hash, IsKey is_key) const {
        if (buckets_.empty()) {
            return kNotFound;
        }
        const std::size_t mask = buckets_.size() - 1;
        for (std::size_t at = hash & mask; buckets_[at].entry_plus_1 != 0; at = (at + 1) & mask) {
            if (buckets_[at].hash == hash && is_key(buckets_[at].entry_plus_1 - 1U)) {
                return buckets_[at].entry_plus_1 - 1U;
            }
        }
        return kNotFound;
    }

    // The key must not be there yet.
    void add(std::uint32_t hash, std::size_t entry) {
        if ((used_ + 1) * 4 > buckets_.size() * 3) {
            grow();
        }
        place({hash, static_cast<std::uint32_t>(entry + 1)});
        ++used_;
    }

    // Forgets the entry; those behind it in the list move up by one. Linear.
    void remove(std::size_t entry) {
        std::vector<Bucket> old(buckets_.size());
        old.swap(buckets_);
        for (Bucket bucket : old) {
            if (bucket.entry_plus_1 != 0 && bucket.entry_plus_1 != entry + 1) {
                if (bucket.entry_plus_1 > entry + 1) {
                    --bucket.entry_plus_1;
                }
                place(bucket);
            }
        }
        --used_;
    }

private:
    struct Bucket {
        std::uint32_t hash = 0;
        std::uint32_t entry_plus_1 = 0;  // 0: free
    };

    void grow() {
        std::vector<Bucket> old(buckets_.empty() ? kFewest : buckets_.size() * 2);
        old.swap(buckets_);
        for (const Bucket& bucket : old) {
            if (bucket.entry_plus_1 != 0) {
                place(bucket);
            }
        }
    }

    void place(Bucket bucket) noexcept {
        const std::size_t mask = buckets_.size() - 1;
        std::size_t at = bucket.hash & mask;
        while (buckets_[at].entry_plus_1 != 0) {
            at = (at + 1) & mask;
        }
        buckets_[at] = bucket;
    }

    static constexpr std::size_t kFewest = 32;

    std::vector<Bucket> buckets_;  // a power of two of them
    std::size_t used_ = 0;
};

}  // namespace brindle
