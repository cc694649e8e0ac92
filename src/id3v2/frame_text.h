// The texts in a tag frame by the public documents.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include <brindle/values.h>

#include "id3v2/frame_fields.h"
#include "id3v2/text_encoding.h"

namespace brindle {

// ISO-8859-1: every byte is the code point of its own number. Hosts take the code page instead.
[[nodiscard]] String from_latin1(std::span<const std::uint8_t> bytes);

// The fields of one frame. What its content does not hold any more is empty.
struct FrameText {
    FrameText(std::string_view id, std::span<const std::uint8_t> content);

    String language;
    std::vector<String> latin1_strings;  // the MIME type of a picture
    std::vector<String> strings;         // descriptions
    std::vector<String> values;
    std::uint8_t type = 0;
    std::size_t data_begin = 0;
};

// Several values as one, with "/" between them, as version 2.3 has them.
[[nodiscard]] String joined(std::span<const String> values);

}  // namespace brindle
