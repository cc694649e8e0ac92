#include "mpeg/bit_digits.h"

#include <cstddef>
#include <limits>

#include <brindle/error.h>

#include "util/fixed_decimal.h"

namespace brindle {
namespace {

constexpr int kBitsPerByte = 8;
constexpr std::int64_t kLargestWholeDecimal =
    std::numeric_limits<std::int64_t>::max() / kDecimalScale;

constexpr char16_t digit_of(std::uint8_t byte, int bit) {
    return ((byte >> bit) & 1) != 0 ? u'1' : u'0';
}

std::int16_t bits_to_number(std::u16string_view digits, std::size_t count) {
    int number = 0;
    for (std::size_t place = 0; place < count; ++place) {
        const char16_t digit = place < digits.size() ? digits[digits.size() - 1 - place] : u'\0';
        if (digit < u'0' || digit > u'9') {
            return -1;
        }
        number += (digit - u'0') << place;
    }
    return static_cast<std::int16_t>(number);
}

}  // namespace

String BytesToBitString(std::span<const std::uint8_t> bytes) {
    String digits(bytes.size() * kBitsPerByte, u'0');
    std::size_t place = 0;
    for (const std::uint8_t byte : bytes) {
        for (int bit = kBitsPerByte - 1; bit >= 0; --bit) {
            digits[place] = digit_of(byte, bit);
            ++place;
        }
    }
    return digits;
}

std::int16_t TwoBitToDec(std::u16string_view digits) {
    return bits_to_number(digits, 2);
}

std::int16_t FourBitToDec(std::u16string_view digits) {
    return bits_to_number(digits, 4);
}

std::int64_t BinToDec(std::u16string_view BinValue) {
    std::int64_t sum = 0;
    for (std::size_t index = 0; index < BinValue.size(); ++index) {
        const std::size_t exponent = BinValue.size() - 1 - index;
        if (BinValue[index] != u'1' || exponent >= std::numeric_limits<std::int64_t>::digits) {
            continue;
        }
        const std::int64_t power = std::int64_t{1} << exponent;
        if (power <= kLargestWholeDecimal - sum) {
            sum += power;
        }
    }
    return sum;
}

String ByteToBit(std::span<const std::uint8_t> ByteArray) {
    constexpr std::size_t kBytesWalked = 2;
    if (ByteArray.size() < kBytesWalked) {
        throw Error(RuntimeError::SubscriptOutOfRange);
    }
    const String digits = BytesToBitString(ByteArray.first(kBytesWalked));
    const std::size_t first_one = digits.find(u'1');
    return first_one == String::npos ? String() : digits.substr(first_one);
}

}  // namespace brindle
