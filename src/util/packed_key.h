// Keys of tables as numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string_view>
#include <vector>

#include <brindle/values.h>

namespace brindle {

// A text of up to four characters, as frame ids are, as one number; a longer one as its number in a
// KeyPacker. A tag can hold a hundred thousand ids, and each is kept twice.
//
//   short   | unit 1 | unit 2 | unit 3 | unit 4 |   a missing unit is FFFF
//   long    |  FFFF  |  0000  |     number      |
enum class PackedKey : std::uint64_t {};

inline constexpr std::size_t kPackedUnits = 4;
inline constexpr char16_t kMissingUnit = 0xFFFF;  // no character in any text
// Represents no text at all.
inline constexpr PackedKey kNoKey{0xFFFF'0001'0000'0000};

// kNoKey for a text that does not fit.
[[nodiscard]] constexpr PackedKey pack_short(std::u16string_view text) noexcept {
    if (text.size() > kPackedUnits) {
        return kNoKey;
    }
    std::uint64_t key = 0;
    for (std::size_t place = 0; place < kPackedUnits; ++place) {
        if (place < text.size() && text[place] == kMissingUnit) {
            return kNoKey;
        }
        key = (key << 16U) | (place < text.size() ? text[place] : kMissingUnit);
    }
    return PackedKey{key};
}

// Packs the keys of one table and gives back their texts.
class KeyPacker {
public:
    [[nodiscard]] PackedKey pack(std::u16string_view text);
    // kNoKey for a text that was never packed.
    [[nodiscard]] PackedKey find(std::u16string_view text) const noexcept;
    [[nodiscard]] String text(PackedKey key) const;

private:
    std::map<String, PackedKey, std::less<>> long_keys_;
    std::vector<const String*> long_texts_;
};

}  // namespace brindle
