#include "id3v2/field_frame.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string_view>

#include <brindle/text.h>

#include "id3v2/custom_field_names.h"
#include "id3v2/custom_fields.h"
#include "id3v2/frame_fields.h"
#include "id3v2/tag_layout.h"
#include "id3v2/text_encoding.h"
#include "util/code_page.h"

namespace brindle {

namespace {

using ByteVector = std::vector<std::uint8_t>;

// "Other": what the documents want where no language is known.
constexpr std::string_view kNoLanguage = "XXX";

void append_narrow(std::u16string_view text, ByteVector& bytes) {
    std::transform(text.begin(), text.end(), std::back_inserter(bytes),
                   [](char16_t unit) { return narrow(unit); });
}

// What the component puts in front of a text in place of language and description ends with a NUL.
std::u16string_view without_prefix(std::u16string_view held) {
    const std::size_t nul = held.find_last_of(kSeparator);
    return nul == std::u16string_view::npos ? held : held.substr(nul + 1);
}

ByteVector unicode_body(const EditedField& field) {
    ByteVector body{static_cast<std::uint8_t>(TextEncoding::Utf16)};
    ByteVector text;
    if (has_description(field.id) && field.id != kCustomId) {
        body.insert(body.end(), kNoLanguage.begin(), kNoLanguage.end());
        text = marked_utf16(kSeparator + String(without_prefix(field.held)));
    } else {
        text = marked_utf16(field.held);
    }
    body.insert(body.end(), text.begin(), text.end());
    return body;
}

ByteVector code_page_body(const EditedField& field) {
    ByteVector body;
    if (!is_link(field.id)) {
        body.push_back(static_cast<std::uint8_t>(TextEncoding::Latin1));
    }
    append_narrow(field.held, body);
    return body;
}

ByteVector with_header(std::string_view id, std::span<const std::uint8_t> body) {
    ByteVector frame = frame_header(id, body.size());
    frame.insert(frame.end(), body.begin(), body.end());
    return frame;
}

bool fits(const String& text, NarrowText narrow) {
    return fits_code_page(text) && (narrow == NarrowText::CodePage ||
                                    std::all_of(text.begin(), text.end(), [](char16_t unit) {
                                        return unit == kSeparator || is_read_alike(unit);
                                    }));
}

}  // namespace

bool has_description(std::string_view id) noexcept {
    return id == "COMM" || id == "USLT" || id == kCustomId;
}

EditedField saved_stamp() {
    return {std::string(kCustomId), kSavedStampName,
            custom_frame(kSavedStampName, kSavedStampValue)};
}

std::vector<std::uint8_t> frame_of(const EditedField& field, std::optional<NarrowText> narrow) {
    const bool is_text = !is_link(field.id) && field.id != "WXXX";
    const bool needs_unicode = narrow && is_text && !fits(field.held, *narrow);
    return with_header(field.id, needs_unicode ? unicode_body(field) : code_page_body(field));
}

std::vector<std::uint8_t> text_frame(std::string_view id, std::string_view text) {
    ByteVector body{static_cast<std::uint8_t>(TextEncoding::Latin1)};
    body.insert(body.end(), text.begin(), text.end());
    return with_header(id, body);
}

}  // namespace brindle
