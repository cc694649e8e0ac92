#include "id3v2/frame_form.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>

#include <brindle/text.h>

#include "util/code_page.h"

namespace brindle {

namespace {

// The first byte of a text frame.
enum class Encoding : std::uint8_t { Latin1 = 0, Utf16 = 1, Utf16BigEndian = 2, Utf8 = 3 };
constexpr std::uint8_t kLastEncoding = 3;

constexpr std::size_t kLanguage = 3;  // letters, in front of a comment or lyrics

constexpr char16_t kByteOrderMark = 0xFEFF;
constexpr char16_t kSwappedMark = 0xFFFE;

using Bytes = std::span<const std::uint8_t>;

template <std::size_t Count>
bool is_one_of(std::string_view id, const std::array<std::string_view, Count>& ids) noexcept {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

// Language in front of the text.
bool has_language(std::string_view id) noexcept {
    constexpr std::array<std::string_view, 4> kIds{"COMM", "USLT", "COM", "ULT"};
    return is_one_of(id, kIds);
}

// A description in the frame's encoding, and a link that is always 8-bit text.
bool is_user_link(std::string_view id) noexcept {
    constexpr std::array<std::string_view, 2> kIds{"WXXX", "WXX"};
    return is_one_of(id, kIds);
}

bool is_people_list(std::string_view id) noexcept {
    constexpr std::array<std::string_view, 2> kIds{"IPLS", "IPL"};
    return is_one_of(id, kIds);
}

bool is_plain_link(std::string_view id) noexcept {
    return id.substr(0, 1) == "W" && !is_user_link(id);
}

// Each string of a frame begins with a mark of its own.
String from_utf16(Bytes bytes, bool big_endian) {
    String text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto high = static_cast<unsigned>(bytes[big_endian ? i : i + 1]);
        const auto low = static_cast<unsigned>(bytes[big_endian ? i + 1 : i]);
        const auto unit = static_cast<char16_t>(high << 8U | low);
        if (unit == kSwappedMark) {
            big_endian = !big_endian;
        } else if (unit != kByteOrderMark) {
            text.push_back(unit);
        }
    }
    return text;
}

String decoded(Encoding encoding, Bytes bytes) {
    switch (encoding) {
        case Encoding::Utf16:
            return from_utf16(bytes, false);
        case Encoding::Utf16BigEndian:
            return from_utf16(bytes, true);
        case Encoding::Utf8:
            return from_utf8(std::string(bytes.begin(), bytes.end()));
        case Encoding::Latin1:
            break;
    }
    return widen(bytes);
}

bool is_wide(Encoding encoding) noexcept {
    return encoding == Encoding::Utf16 || encoding == Encoding::Utf16BigEndian;
}

// The length of the string that the bytes begin with, without its NUL.
std::size_t string_length(Encoding encoding, Bytes bytes) noexcept {
    if (!is_wide(encoding)) {
        return static_cast<std::size_t>(
            std::distance(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)));
    }
    std::size_t length = 0;
    while (length + 1 < bytes.size() && (bytes[length] != 0 || bytes[length + 1] != 0)) {
        length += 2;
    }
    return length + 1 < bytes.size() ? length : bytes.size();
}

// The encoding of a body, and what stands behind its byte. A body that has none is 8-bit text.
Encoding take_encoding(Bytes& body) noexcept {
    if (body.empty() || body[0] > kLastEncoding) {
        return Encoding::Latin1;
    }
    const auto encoding = static_cast<Encoding>(body[0]);
    body = body.subspan(1);
    return encoding;
}

}  // namespace

bool is_text_frame(std::string_view id) noexcept {
    return id.substr(0, 1) == "T" || id.substr(0, 1) == "W" || has_language(id) ||
           is_people_list(id);
}

String text_of_frame(std::string_view id, Bytes body) {
    String text;
    if (is_plain_link(id)) {
        text = widen(body);
    } else {
        const Encoding encoding = take_encoding(body);
        if (has_language(id)) {
            const std::size_t letters = std::min(kLanguage, body.size());
            text = widen(body.first(letters));
            body = body.subspan(letters);
        }
        if (is_user_link(id)) {
            const std::size_t description = string_length(encoding, body);
            text = decoded(encoding, body.first(description)) + widen(body.subspan(description));
        } else {
            text += decoded(encoding, body);
        }
    }
    std::erase(text, u'\0');
    return text;
}

String description_of(Bytes body) {
    const Encoding encoding = take_encoding(body);
    return decoded(encoding, body.first(string_length(encoding, body)));
}

}  // namespace brindle
