#include "output/printable_text.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <optional>

#include <brindle/text.h>

namespace brindle::host {

namespace {

struct CodePoints {
    char32_t first;
    char32_t last;
};

// Controls (Cc), format characters (Cf) and separators of lines and paragraphs (Zl, Zp) of Unicode
// 15: they end lines, hide text or turn its direction, and show nothing themselves.
constexpr CodePoints kInvisible[] = {
    {0x0000, 0x001F},   {0x007F, 0x009F},   {0x00AD, 0x00AD},   {0x0600, 0x0605},
    {0x061C, 0x061C},   {0x06DD, 0x06DD},   {0x070F, 0x070F},   {0x0890, 0x0891},
    {0x08E2, 0x08E2},   {0x180E, 0x180E},   {0x200B, 0x200F},   {0x2028, 0x202E},
    {0x2060, 0x2064},   {0x2066, 0x206F},   {0xFEFF, 0xFEFF},   {0xFFF9, 0xFFFB},
    {0x110BD, 0x110BD}, {0x110CD, 0x110CD}, {0x13430, 0x1343F}, {0x1BCA0, 0x1BCA3},
    {0x1D173, 0x1D17A}, {0xE0001, 0xE0001}, {0xE0020, 0xE007F},
};

bool is_invisible(char32_t code_point) {
    const auto* const range = std::lower_bound(
        std::begin(kInvisible), std::end(kInvisible), code_point,
        [](const CodePoints& points, char32_t wanted) { return points.last < wanted; });
    return range != std::end(kInvisible) && code_point >= range->first;
}

// How many bytes follow the first one of a character in UTF-8, what of the first one counts, and
// the least character that is written so.
struct Utf8Form {
    unsigned char lead_mask;
    unsigned char lead;
    std::size_t length;
    char32_t least;
};
constexpr Utf8Form kForms[] = {
    {0x80, 0x00, 1, 0x00}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};

struct Character {
    char32_t code_point;
    std::size_t length;
};

// The character at the front; none where the bytes are no UTF-8.
std::optional<Character> first_character(std::string_view utf8) {
    constexpr unsigned char kContinuationMask = 0xC0;
    constexpr unsigned char kContinuation = 0x80;
    constexpr unsigned kContinuationBits = 6;
    constexpr CodePoints kSurrogates{0xD800, 0xDFFF};
    constexpr char32_t kLast = 0x10FFFF;
    const auto byte = [&](std::size_t place) { return static_cast<unsigned char>(utf8[place]); };
    const auto* const form =
        std::find_if(std::begin(kForms), std::end(kForms),
                     [&](const Utf8Form& row) { return (byte(0) & row.lead_mask) == row.lead; });
    if (form == std::end(kForms) || utf8.size() < form->length) {
        return std::nullopt;
    }
    char32_t code_point = byte(0) & static_cast<unsigned char>(~form->lead_mask);
    for (std::size_t place = 1; place < form->length; ++place) {
        if ((byte(place) & kContinuationMask) != kContinuation) {
            return std::nullopt;
        }
        code_point = code_point << kContinuationBits |
                     (byte(place) & static_cast<unsigned char>(~kContinuationMask));
    }
    if (code_point < form->least || code_point > kLast ||
        (code_point >= kSurrogates.first && code_point <= kSurrogates.last)) {
        return std::nullopt;
    }
    return Character{code_point, form->length};
}

std::string in_hex(const char* format, char32_t number) {
    char text[16];
    const int length = std::snprintf(text, sizeof text, format, static_cast<unsigned>(number));
    return {text, static_cast<std::size_t>(length)};
}

std::string escaped(char32_t code_point) {
    constexpr char32_t kLastAscii = 0x7F;
    constexpr char32_t kLastShort = 0xFFFF;
    switch (code_point) {
        case U'\n':
            return "\\n";
        case U'\r':
            return "\\r";
        case U'\t':
            return "\\t";
        default:
            return in_hex(code_point <= kLastAscii   ? "\\x%02X"
                          : code_point <= kLastShort ? "\\u%04X"
                                                     : "\\U%08X",
                          code_point);
    }
}

}  // namespace

std::string printable(std::string_view utf8) {
    std::string shown;
    shown.reserve(utf8.size());
    while (!utf8.empty()) {
        const std::optional<Character> character = first_character(utf8);
        const std::size_t length = character ? character->length : 1;
        if (!character) {
            shown += in_hex("\\x%02X", static_cast<unsigned char>(utf8.front()));
        } else if (is_invisible(character->code_point)) {
            shown += escaped(character->code_point);
        } else {
            shown += utf8.substr(0, length);
        }
        utf8.remove_prefix(length);
    }
    return shown;
}

std::string printable(const String& text) {
    return printable(to_utf8(text));
}

std::string in_quotes(const String& text) {
    return "\"" + printable(text) + "\"";
}

}  // namespace brindle::host
