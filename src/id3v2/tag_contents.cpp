#include "id3v2/tag_contents.h"

#include <algorithm>
#include <iterator>

#include "id3v2/content_type.h"
#include "util/code_page.h"

namespace brindle {

namespace {

constexpr std::u16string_view kPicture = u"APIC";

std::span<std::uint8_t> without_nuls(std::span<std::uint8_t> bytes) {
    const auto end = std::remove(bytes.begin(), bytes.end(), std::uint8_t{0});
    return bytes.first(static_cast<std::size_t>(end - bytes.begin()));
}

// A custom frame holds name, NUL, value; what stands behind a further NUL counts for nothing. A
// frame without a NUL has no value and is no field.
void file_custom(CustomFields& fields, std::span<const std::uint8_t> frame) {
    const auto name_end = std::find(frame.begin(), frame.end(), 0);
    if (name_end == frame.end()) {
        return;
    }
    const auto value = std::next(name_end);
    const auto value_end = std::find(value, frame.end(), 0);
    fields.add_first(StoredText::in_file({frame.begin(), name_end}),
                     StoredText::in_file({value, value_end}));
}

const StandardFieldRow* find_row(std::u16string_view id) noexcept {
    const auto row = std::find_if(kStandardFields.begin(), kStandardFields.end(),
                                  [&](const StandardFieldRow& r) { return r.frame_id == id; });
    return row == kStandardFields.end() ? nullptr : &*row;
}

}  // namespace

String TagContents::file(std::string_view narrow_id, std::span<std::uint8_t> value) {
    String id;
    for (const char character : narrow_id) {
        id.push_back(widen(static_cast<std::uint8_t>(character)));
    }
    const bool is_custom = id == kCustomFrame;
    if (!is_custom && id != kPicture) {
        value = without_nuls(value);
    }
    frames.append(id, StoredText::in_file(value));
    if (is_custom) {
        file_custom(custom, value);
        return id;
    }
    const StandardFieldRow* row = find_row(id);
    if (row == nullptr) {
        return id;
    }
    StoredText text = StoredText::in_file(value);
    switch (row->field) {
        case StandardField::Comment:
            fields.add_comment(std::move(text));
            break;
        case StandardField::OtherGenreName: {
            ContentType type = read_content_type(text);
            genre = type.number.value_or(genre);
            fields.set(StandardField::OtherGenreName, std::move(type.name));
            break;
        }
        default:
            fields.set(row->field, std::move(text));
    }
    return id;
}

}  // namespace brindle
