#include "id3v2/frame_form.h"

#include <algorithm>
#include <array>

#include "id3v2/text_encoding.h"
#include "util/code_page.h"

namespace brindle {

namespace {

constexpr std::size_t kLanguage = 3;  // letters, in front of a comment or lyrics

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

// The encoding of a body, and what follows its byte. A body that has none is 8-bit text.
TextEncoding take_encoding(Bytes& body) noexcept {
    if (body.empty() || body[0] > kLastEncoding) {
        return TextEncoding::Latin1;
    }
    const auto encoding = static_cast<TextEncoding>(body[0]);
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
        const TextEncoding encoding = take_encoding(body);
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
    const TextEncoding encoding = take_encoding(body);
    return decoded(encoding, body.first(string_length(encoding, body)));
}

}  // namespace brindle
