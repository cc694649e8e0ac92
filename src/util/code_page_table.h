#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace brindle {

// A single-byte code page both ways. The first 128 bytes are ASCII in each of them.
class CodePageTable {
public:
    static constexpr std::size_t kBytes = 256;
    static constexpr std::size_t kAscii = 128;
    using Units = std::array<char16_t, kBytes>;

    constexpr explicit CodePageTable(const Units& units) : units_(units) {
        for (std::size_t byte = kAscii; byte < kBytes; ++byte) {
            bytes_[byte - kAscii] = {units[byte], static_cast<std::uint8_t>(byte)};
        }
        std::sort(bytes_.begin(), bytes_.end(),
                  [](const Row& a, const Row& b) { return a.unit < b.unit; });
    }

    [[nodiscard]] constexpr char16_t unit_of(std::uint8_t byte) const noexcept {
        return units_[byte];
    }

    // "?" for a character outside the page.
    [[nodiscard]] std::uint8_t byte_of(char16_t unit) const noexcept {
        // Most characters of a page are the code points of their own number.
        if (unit < kBytes && units_[unit] == unit) {
            return static_cast<std::uint8_t>(unit);
        }
        const auto* const found =
            std::lower_bound(bytes_.begin(), bytes_.end(), unit,
                             [](const Row& row, char16_t wanted) { return row.unit < wanted; });
        return found != bytes_.end() && found->unit == unit ? found->byte : std::uint8_t{'?'};
    }

private:
    struct Row {
        char16_t unit;
        std::uint8_t byte;
    };

    Units units_;
    std::array<Row, kBytes - kAscii> bytes_{};  // by unit
};

}  // namespace brindle
