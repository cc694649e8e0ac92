#include "printable_text.h"

#include <brindle/text.h>

namespace brindle::host {

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

constexpr unsigned char kDelete = 0x7F;
// U+0080 to U+009F are written as this byte and one of 0x80 to 0x9F.
constexpr unsigned char kC1Lead = 0xC2;
constexpr unsigned char kFirstC1 = 0x80;
constexpr unsigned char kLastC1 = 0x9F;

void append_hex(std::string& to, unsigned char byte) {
    to += kHexDigits[byte >> 4];
    to += kHexDigits[byte & 0xF];
}

void append_control(std::string& to, unsigned char control) {
    switch (control) {
        case '\n':
            to += "\\n";
            break;
        case '\r':
            to += "\\r";
            break;
        case '\t':
            to += "\\t";
            break;
        default:
            to += "\\x";
            append_hex(to, control);
    }
}

}  // namespace

std::string printable(std::string_view utf8) {
    std::string shown;
    shown.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        const auto next = i + 1 < utf8.size() ? static_cast<unsigned char>(utf8[i + 1])
                                              : static_cast<unsigned char>(0);
        if (byte < ' ' || byte == kDelete) {
            append_control(shown, byte);
        } else if (byte == kC1Lead && next >= kFirstC1 && next <= kLastC1) {
            shown += "\\u00";
            append_hex(shown, next);
            ++i;
        } else {
            shown += utf8[i];
        }
    }
    return shown;
}

std::string printable(const String& text) {
    return printable(to_utf8(text));
}

}  // namespace brindle::host
