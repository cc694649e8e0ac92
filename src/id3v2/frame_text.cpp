#include "id3v2/frame_text.h"

#include <algorithm>
#include <utility>

namespace brindle {

namespace {

using Bytes = std::span<const std::uint8_t>;

class FieldReader {
public:
    FieldReader(Bytes content, FrameText& text) : content_(content), text_(text) {}

    void take(FrameField field) {
        switch (field) {
            case FrameField::Encoding:
                if (const Bytes byte = take_bytes(1); !byte.empty() && byte[0] <= kLastEncoding) {
                    encoding_ = static_cast<TextEncoding>(byte[0]);
                }
                return;
            case FrameField::Language:
                text_.language = from_latin1(take_bytes(width_of(field)));
                return;
            case FrameField::OneByte:
                if (const Bytes byte = take_bytes(width_of(field)); !byte.empty()) {
                    text_.type = byte[0];
                }
                return;
            case FrameField::TwoBytes:
            case FrameField::Date:
                take_bytes(width_of(field));
                return;
            case FrameField::Latin1String:
                text_.latin1_strings.push_back(take_string(TextEncoding::Latin1));
                return;
            case FrameField::EncodedString:
                text_.strings.push_back(take_string(encoding_));
                return;
            case FrameField::Text:
                take_values();
                return;
            case FrameField::SyncedText:
                return;
            case FrameField::Data:
                text_.data_begin = position_;
                return;
        }
    }

private:
    [[nodiscard]] Bytes ahead() const { return content_.subspan(position_); }
    Bytes take_bytes(std::size_t count) {
        const Bytes bytes = ahead().first(std::min(count, ahead().size()));
        position_ += bytes.size();
        return bytes;
    }
    String take_string(TextEncoding encoding) {
        const Bytes bytes = take_bytes(string_length(encoding, ahead()));
        take_bytes(terminator_size(encoding));
        return encoding == TextEncoding::Latin1 ? from_latin1(bytes) : decoded(encoding, bytes);
    }

    // A terminator at the end begins no other value.
    void take_values() {
        do {
            text_.values.push_back(take_string(encoding_));
        } while (!ahead().empty());
        while (text_.values.size() > 1 && text_.values.back().empty()) {
            text_.values.pop_back();
        }
    }

    Bytes content_;
    FrameText& text_;
    std::size_t position_ = 0;
    TextEncoding encoding_ = TextEncoding::Latin1;
};

}  // namespace

String from_latin1(std::span<const std::uint8_t> bytes) {
    return {bytes.begin(), bytes.end()};
}

FrameText::FrameText(std::string_view id, std::span<const std::uint8_t> content) {
    FieldReader reader(content, *this);
    for (const FrameField field : fields_of(id)) {
        reader.take(field);
    }
}

String joined(std::span<const String> values) {
    String text;
    for (const String& value : values) {
        text += (&value == values.data() ? u"" : u"/") + value;
    }
    return text;
}

}  // namespace brindle
