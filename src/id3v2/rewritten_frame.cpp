#include "id3v2/rewritten_frame.h"

#include <algorithm>
#include <iterator>

#include "id3v2/frame_fields.h"
#include "id3v2/frame_text.h"
#include "id3v2/text_encoding.h"

namespace brindle {

namespace {

using ByteVector = std::vector<std::uint8_t>;
using Bytes = std::span<const std::uint8_t>;

constexpr std::string_view kPicture = "APIC";
constexpr std::string_view kPeople = "IPLS";
constexpr std::string_view kPeopleOfVersion4 = "TIPL";  // of the same fields

bool is_latin1(const String& text) {
    constexpr char16_t kCharacters = 0x100;
    return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < kCharacters; });
}

void append_latin1(const String& text, ByteVector& bytes) {
    std::transform(text.begin(), text.end(), std::back_inserter(bytes),
                   [](char16_t unit) { return static_cast<std::uint8_t>(unit); });
}

// The texts with a terminator after each but the last.
void append_texts(const std::vector<String>& texts, TextEncoding encoding, ByteVector& bytes) {
    for (const String& text : texts) {
        if (&text != texts.data()) {
            bytes.insert(bytes.end(), terminator_size(encoding), 0);
        }
        if (encoding == TextEncoding::Latin1) {
            append_latin1(text, bytes);
        } else {
            const ByteVector utf16 = marked_utf16(text);
            bytes.insert(bytes.end(), utf16.begin(), utf16.end());
        }
    }
}

}  // namespace

bool has_values(std::string_view id) noexcept {
    return id == kPeople || holds_only_text(id);
}

std::optional<std::vector<std::uint8_t>> with_new_image(
    Bytes content, std::size_t prefix, const TagFrame& frame,
    const decltype(EditOptions::new_image)& new_image) {
    const FrameText text(kPicture, content);
    if (text.data_begin == content.size()) {
        return std::nullopt;  // no image, or cut in front of it
    }
    EditedPicture picture;
    static_cast<TagFrame&>(picture) = frame;
    picture.mime_type = text.latin1_strings.front();
    const auto image = content.begin() + static_cast<std::ptrdiff_t>(text.data_begin);
    picture.image.assign(image, content.end());
    picture.other_bytes = prefix + text.data_begin - picture.mime_type.size();
    const std::optional<NewImage> made = new_image(picture);
    if (!made) {
        return std::nullopt;
    }
    ByteVector other{content.front()};
    append_latin1(made->mime_type, other);
    other.insert(other.end(),
                 content.begin() + 1 + static_cast<std::ptrdiff_t>(picture.mime_type.size()),
                 image);
    other.insert(other.end(), made->bytes.begin(), made->bytes.end());
    return other;
}

std::optional<std::vector<std::uint8_t>> with_new_text(
    std::string_view id, Bytes content, const TagFrame& frame,
    const decltype(EditOptions::new_text)& new_text) {
    if (content.empty() || content.front() > kLastEncoding) {
        return std::nullopt;
    }
    const FrameText text(id == kPeople ? kPeopleOfVersion4 : id, content);
    std::vector<String> strings = text.strings;
    bool is_changed = false;
    for (const String& value : text.values) {
        const std::optional<String> other = new_text(frame, value);
        is_changed = is_changed || other;
        strings.push_back(other.value_or(value));
    }
    if (!is_changed) {
        return std::nullopt;
    }
    const bool is_narrow = std::all_of(strings.begin(), strings.end(), is_latin1);
    const TextEncoding encoding = is_narrow ? TextEncoding::Latin1 : TextEncoding::Utf16;
    ByteVector other{static_cast<std::uint8_t>(encoding)};
    append_latin1(text.language, other);
    append_texts(strings, encoding, other);
    return other;
}

}  // namespace brindle
