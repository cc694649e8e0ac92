#include <algorithm>
#include <utility>

#include <brindle/error.h>
#include <brindle/keyed_collection.h>

namespace brindle {
namespace {

constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);
// Up to this many keys are compared one by one.
constexpr std::size_t kUnindexed = 8;
constexpr std::size_t kFirstBuckets = 32;

}  // namespace

void KeyedCollection::Remove(std::u16string_view key) {
    const std::size_t entry = find(key);
    if (entry == kNotFound) {
        throw Error(RuntimeError::InvalidCall);
    }
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(entry));
    if (!index_.empty()) {
        // The same number of buckets: removing needs no memory, so it cannot fail half done.
        rebuild_index(index_.size());
    }
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
    if (entry == kNotFound) {
        throw Error(RuntimeError::InvalidCall);
    }
    return Item(static_cast<std::int32_t>(entry + 1));
}

bool KeyedCollection::Exists(std::u16string_view key) const noexcept {
    return find(key) != kNotFound;
}

std::int32_t KeyedCollection::Count() const noexcept {
    return static_cast<std::int32_t>(entries_.size());
}

// FNV-1a over the units, its bits spread at the end. The keys come from files: without a seed that
// nobody can know beforehand, a file could name its frames so that all of them meet in one bucket.
std::size_t KeyedCollection::home_bucket(std::u16string_view key) const noexcept {
    constexpr std::uint64_t kOffsetBasis = 0xCBF29CE484222325;
    constexpr std::uint64_t kPrime = 0x100000001B3;
    constexpr std::uint64_t kSpread = 0xFF51AFD7ED558CCD;
    std::uint64_t hash = kOffsetBasis ^ seed_;
    for (const char16_t unit : key) {
        hash = (hash ^ unit) * kPrime;
    }
    hash = (hash ^ hash >> 33) * kSpread;
    hash ^= hash >> 33;
    return static_cast<std::size_t>(hash) & (index_.size() - 1);
}

std::size_t KeyedCollection::find(std::u16string_view key) const noexcept {
    if (index_.empty()) {
        const auto found = std::find_if(entries_.begin(), entries_.end(),
                                        [key](const Entry& entry) { return entry.key == key; });
        return found == entries_.end() ? kNotFound
                                       : static_cast<std::size_t>(found - entries_.begin());
    }
    for (std::size_t bucket = home_bucket(key); index_[bucket] != 0;
         bucket = (bucket + 1) & (index_.size() - 1)) {
        const std::size_t entry = index_[bucket] - 1;
        if (entries_[entry].key == key) {
            return entry;
        }
    }
    return kNotFound;
}

void KeyedCollection::append(std::u16string_view key, std::unique_ptr<Variant> item) {
    if (find(key) != kNotFound) {
        throw Error(RuntimeError::KeyAlreadyExists);
    }
    // All memory first: when there is none, the collection is as it was.
    const std::size_t count = entries_.size() + 1;
    if (index_.empty() ? count > kUnindexed : count * 2 > index_.size()) {
        rebuild_index(index_.empty() ? kFirstBuckets : index_.size() * 2);
    }
    entries_.push_back({String(key), std::move(item)});
    if (!index_.empty()) {
        index_entry(entries_.size() - 1);
    }
}

void KeyedCollection::rebuild_index(std::size_t buckets) {
    if (buckets == index_.size()) {
        std::fill(index_.begin(), index_.end(), 0U);
    } else {
        std::vector<std::uint32_t>(buckets).swap(index_);
    }
    if (seed_ == 0) {
        // Where the memory lies differs from process to process.
        seed_ = reinterpret_cast<std::uintptr_t>(index_.data()) * std::uint64_t{0x9E3779B97F4A7C15};
    }
    for (std::size_t entry = 0; entry < entries_.size(); ++entry) {
        index_entry(entry);
    }
}

void KeyedCollection::index_entry(std::size_t entry) noexcept {
    std::size_t bucket = home_bucket(entries_[entry].key);
    while (index_[bucket] != 0) {
        bucket = (bucket + 1) & (index_.size() - 1);
    }
    index_[bucket] = static_cast<std::uint32_t>(entry + 1);
}

}  // namespace brindle
