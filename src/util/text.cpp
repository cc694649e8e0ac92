#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <brindle/text.h>

#include "util/code_page.h"

namespace brindle {
namespace {

constexpr char16_t kHighSurrogates = 0xD800;
constexpr char16_t kLowSurrogates = 0xDC00;
constexpr char16_t kSurrogatesEnd = 0xE000;
// A byte that is no UTF-8 is kept as this plus the byte: U+DC80 to U+DCFF.
constexpr char16_t kStrayByteBase = 0xDC00;
constexpr char16_t kFirstStrayByte = 0xDC80;
constexpr char16_t kLastStrayByte = 0xDCFF;
constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kFirstOfTwoBytes = 0x80;
constexpr char32_t kFirstSupplementary = 0x10000;

constexpr bool is_high_surrogate(char16_t unit) {
    return unit >= kHighSurrogates && unit < kLowSurrogates;
}

constexpr bool is_low_surrogate(char16_t unit) {
    return unit >= kLowSurrogates && unit < kSurrogatesEnd;
}

void append_utf8(std::string& bytes, char32_t point) {
    const auto append = [&bytes](char32_t byte) { bytes.push_back(static_cast<char>(byte)); };
    if (point < kFirstOfTwoBytes) {
        append(point);
    } else if (point < 0x800) {
        append(0xC0 | point >> 6);
        append(0x80 | (point & 0x3F));
    } else if (point < kFirstSupplementary) {
        append(0xE0 | point >> 12);
        append(0x80 | (point >> 6 & 0x3F));
        append(0x80 | (point & 0x3F));
    } else {
        append(0xF0 | point >> 18);
        append(0x80 | (point >> 12 & 0x3F));
        append(0x80 | (point >> 6 & 0x3F));
        append(0x80 | (point & 0x3F));
    }
}

void append_utf16(String& text, char32_t point) {
    if (point < kFirstSupplementary) {
        text.push_back(static_cast<char16_t>(point));
        return;
    }
    const char32_t rest = point - kFirstSupplementary;
    text.push_back(static_cast<char16_t>(kHighSurrogates + (rest >> 10)));
    text.push_back(static_cast<char16_t>(kLowSurrogates + (rest & 0x3FF)));
}

// The well-formed sequences, by their lead byte: how many bytes follow, and the range of the
// first of these, which leaves out overlong forms, surrogates and what is above U+10FFFF.
struct LeadRow {
    std::uint8_t first_lead;
    std::uint8_t last_lead;
    std::uint8_t following;
    std::uint8_t second_min;
    std::uint8_t second_max;
};

constexpr LeadRow kLeads[] = {
    {0x00, 0x7F, 0, 0x00, 0x00},  //
    {0xC2, 0xDF, 1, 0x80, 0xBF},  //
    {0xE0, 0xE0, 2, 0xA0, 0xBF},  //
    {0xE1, 0xEC, 2, 0x80, 0xBF},  //
    {0xED, 0xED, 2, 0x80, 0x9F},  //
    {0xEE, 0xEF, 2, 0x80, 0xBF},  //
    {0xF0, 0xF0, 3, 0x90, 0xBF},  //
    {0xF1, 0xF3, 3, 0x80, 0xBF},  //
    {0xF4, 0xF4, 3, 0x80, 0x8F},
};

// The number of bytes of the well-formed sequence at the start of `bytes`, and its code point; 0
// when there is none.
std::size_t decode(std::string_view bytes, char32_t& point) {
    const auto byte = [bytes](std::size_t i) { return static_cast<std::uint8_t>(bytes[i]); };
    for (const LeadRow& row : kLeads) {
        if (byte(0) < row.first_lead || byte(0) > row.last_lead) {
            continue;
        }
        if (row.following == 0) {
            point = byte(0);
            return 1;
        }
        if (bytes.size() <= row.following || byte(1) < row.second_min || byte(1) > row.second_max) {
            return 0;
        }
        // A lead byte has one bit fewer for the code point with each byte that follows it.
        point = byte(0) & (0x3FU >> row.following);
        for (std::size_t i = 1; i <= row.following; ++i) {
            if (byte(i) < 0x80 || byte(i) > 0xBF) {
                return 0;
            }
            point = point << 6 | (byte(i) & 0x3FU);
        }
        return row.following + std::size_t{1};
    }
    return 0;
}

}  // namespace

std::string to_utf8(std::u16string_view text) {
    // Nearly all names are ASCII to their end.
    const auto* const other = std::find_if(text.begin(), text.end(),
                                           [](char16_t unit) { return unit >= kFirstOfTwoBytes; });
    std::string bytes(text.begin(), other);
    if (other == text.end()) {
        return bytes;
    }
    bytes.reserve(text.size());
    for (std::size_t i = bytes.size(); i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (is_high_surrogate(unit) && i + 1 < text.size() && is_low_surrogate(text[i + 1])) {
            const auto high = static_cast<char32_t>(unit - kHighSurrogates);
            const auto low = static_cast<char32_t>(text[i + 1] - kLowSurrogates);
            append_utf8(bytes, kFirstSupplementary + (high << 10 | low));
            ++i;
        } else if (unit >= kFirstStrayByte && unit <= kLastStrayByte) {
            bytes.push_back(static_cast<char>(unit - kStrayByteBase));
        } else if (is_high_surrogate(unit) || is_low_surrogate(unit)) {
            append_utf8(bytes, kReplacement);
        } else {
            append_utf8(bytes, unit);
        }
    }
    return bytes;
}

String from_utf8(std::string_view text) {
    String units;
    units.reserve(text.size());
    while (!text.empty()) {
        char32_t point = 0;
        const std::size_t used = decode(text, point);
        if (used == 0) {
            const auto byte = static_cast<std::uint8_t>(text.front());
            units.push_back(static_cast<char16_t>(kStrayByteBase + byte));
            text.remove_prefix(1);
        } else {
            append_utf16(units, point);
            text.remove_prefix(used);
        }
    }
    return units;
}

bool fits_code_page(std::u16string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char16_t unit) { return widen(narrow(unit)) == unit; });
}

}  // namespace brindle
