#include "util/packed_key.h"

namespace brindle {
namespace {

constexpr std::uint64_t kLongMark = 0xFFFF'0000'0000'0000;
constexpr std::uint64_t kLongMask = 0xFFFF'FFFF'0000'0000;
constexpr unsigned kUnitBits = 16;

constexpr std::uint64_t bits_of(PackedKey key) {
    return static_cast<std::uint64_t>(key);
}

}  // namespace

PackedKey KeyPacker::pack(std::u16string_view text) {
    const PackedKey known = find(text);
    if (known != kNoKey) {
        return known;
    }
    const PackedKey key{kLongMark | long_texts_.size()};
    const auto added = long_keys_.emplace(text, key).first;
    try {
        long_texts_.push_back(&added->first);
    } catch (...) {
        long_keys_.erase(added);
        throw;
    }
    return key;
}

PackedKey KeyPacker::find(std::u16string_view text) const noexcept {
    const PackedKey key = pack_short(text);
    if (key != kNoKey) {
        return key;
    }
    const auto found = long_keys_.find(text);
    return found == long_keys_.end() ? kNoKey : found->second;
}

String KeyPacker::text(PackedKey key) const {
    if ((bits_of(key) & kLongMask) == kLongMark) {
        return *long_texts_[static_cast<std::uint32_t>(bits_of(key))];
    }
    String text;
    for (std::size_t place = kPackedUnits; place > 0; --place) {
        const auto unit = static_cast<char16_t>(bits_of(key) >> ((place - 1) * kUnitBits));
        if (unit == kMissingUnit) {
            break;
        }
        text.push_back(unit);
    }
    return text;
}

}  // namespace brindle
