#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace brindle::host {

// Two lower-case digits a byte.
[[nodiscard]] inline std::string hexadecimal(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0xFU];
    }
    return text;
}

}  // namespace brindle::host
