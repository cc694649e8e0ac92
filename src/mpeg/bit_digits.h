// Numbers as texts of binary digits, most significant first.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include <brindle/values.h>

namespace brindle {

// Eight digits a byte, bytes in order.
[[nodiscard]] String BytesToBitString(std::span<const std::uint8_t> bytes);

// The number in the last two (four) characters; -1 when one of them is no digit.
[[nodiscard]] std::int16_t TwoBitToDec(std::u16string_view digits);
[[nodiscard]] std::int16_t FourBitToDec(std::u16string_view digits);

// The whole number in any count of digits; every character but "1" counts as "0". The
// range is that of a decimal with four places in 64 bits: a digit that would lead out of it is
// left out of the sum.
[[nodiscard]] std::int64_t BinToDec(std::u16string_view BinValue);

// The digits of the first two bytes without leading zeros, "" when both are 0. Error 9 when there
// are fewer than two.
[[nodiscard]] String ByteToBit(std::span<const std::uint8_t> ByteArray);

}  // namespace brindle
