#include "id3v2/common_form.h"

#include <algorithm>
#include <iterator>

#include "id3v2/frame_fields.h"
#include "id3v2/frame_text.h"
#include "id3v2/text_encoding.h"
#include "util/code_page.h"

namespace brindle {

namespace {

using ByteVector = std::vector<std::uint8_t>;
using Bytes = std::span<const std::uint8_t>;

constexpr std::string_view kPeople[] = {"IPLS", "TIPL", "TMCL"};
constexpr std::string_view kComment = "COMM";
constexpr std::string_view kGenre = "TCON";
constexpr std::string_view kUserLink = "WXXX";

bool are_read_alike(const std::vector<String>& texts) {
    return std::all_of(texts.begin(), texts.end(), [](const String& text) {
        return std::all_of(text.begin(), text.end(), is_read_alike);
    });
}

// Whose texts hosts show. Pictures, objects and the like are of no use to them.
bool is_shown(std::string_view id) {
    return id == kUserLink || holds_only_text(id);
}

bool is_number(const String& text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; });
}

// "17", "Salsa" becomes "(17)Salsa": "ID3 tag version 2.3.0", 4.2.1 TCON.
std::vector<String> genres_of_version3(const std::vector<String>& values) {
    String numbers;
    std::vector<String> names;
    for (const String& value : values) {
        if (is_number(value) || value == u"RX" || value == u"CR") {
            numbers += u"(" + value + u")";
        } else {
            names.push_back(value);
        }
    }
    if (numbers.empty()) {
        return values;
    }
    return {numbers + joined(names)};
}

void append_latin1(const String& text, ByteVector& bytes) {
    std::transform(text.begin(), text.end(), std::back_inserter(bytes),
                   [](char16_t unit) { return static_cast<std::uint8_t>(unit); });
}

CommonForm recoded_people(Bytes content) {
    const FrameText text("TIPL", content);
    if (static_cast<TextEncoding>(content.front()) == TextEncoding::Latin1) {
        return {};
    }
    if (!are_read_alike(text.values)) {
        return {CommonFormResult::NoneThere, {}};
    }
    return {CommonFormResult::Recoded, list_of_people(text.values)};
}

}  // namespace

CommonForm in_common_form(std::string_view id, Bytes content, bool was_version4) {
    if (content.empty()) {
        return {};
    }
    if (is_link(id)) {
        return {CommonFormResult::NoneThere, {}};
    }
    if (content.front() > kLastEncoding) {
        return {};
    }
    if (std::find(std::begin(kPeople), std::end(kPeople), id) != std::end(kPeople)) {
        return recoded_people(content);
    }
    if (!is_shown(id)) {
        return {};
    }
    const FrameText text(id, content);
    const bool drops_language = id == kComment && text.strings.front().empty() &&
                                text.language != String(text.language.size(), u'\0');
    const std::vector<String> values =
        id == kGenre && was_version4 ? genres_of_version3(text.values) : text.values;
    const bool is_latin1 = static_cast<TextEncoding>(content.front()) == TextEncoding::Latin1;
    if (is_latin1 && text.values.size() <= 1 && values == text.values && !drops_language) {
        return {};
    }
    if (!are_read_alike(values) || !are_read_alike(text.strings)) {
        return {CommonFormResult::NoneThere, {}};
    }
    CommonForm form{values.size() > 1 ? CommonFormResult::Joined : CommonFormResult::Recoded,
                    {static_cast<std::uint8_t>(TextEncoding::Latin1)}};
    append_latin1(drops_language ? String(text.language.size(), u'\0') : text.language,
                  form.content);
    for (const String& description : text.strings) {
        append_latin1(description, form.content);
        form.content.push_back(0);
    }
    append_latin1(joined(values), form.content);
    if (id == kUserLink) {
        const Bytes link = content.subspan(text.data_begin);
        form.content.insert(form.content.end(), link.begin(), link.end());
    }
    return form;
}

std::vector<std::uint8_t> list_of_people(const std::vector<String>& values) {
    const bool is_latin1 = are_read_alike(values);
    ByteVector content{
        static_cast<std::uint8_t>(is_latin1 ? TextEncoding::Latin1 : TextEncoding::Utf16)};
    for (const String& value : values) {
        if (is_latin1) {
            append_latin1(value, content);
            content.push_back(0);
        } else {
            const ByteVector text = marked_utf16(value);
            content.insert(content.end(), text.begin(), text.end());
            content.insert(content.end(), 2, 0);
        }
    }
    return content;
}

}  // namespace brindle
