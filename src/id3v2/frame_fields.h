// What the bodies of frames are made of, as far as text of an encoding is in them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace brindle {

enum class FrameField : std::uint8_t {
    Encoding,       // one byte; says how the texts after it are written
    Language,       // three letters
    OneByte,        // a type
    TwoBytes,       // two of them
    Date,           // eight digits
    Latin1String,   // with its terminator
    EncodedString,  // in the frame's encoding, with its terminator
    Text,           // strings in the frame's encoding up to the end
    SyncedText,     // strings in the frame's encoding, each followed by a time of four bytes
    Data,           // bytes up to the end
};

// The bytes of a field that is always of one width; 0 for the others.
[[nodiscard]] std::size_t width_of(FrameField field) noexcept;

// The fields of a frame of version 2.3 or 2.4; none for a frame without an encoding. Text frames
// are all whose id begins with "T".
[[nodiscard]] std::span<const FrameField> fields_of(std::string_view id) noexcept;

// Whether values in the frame's encoding are in it.
[[nodiscard]] bool holds_text(std::string_view id) noexcept;

// The same, and nothing else but a language and descriptions, so that the frame can be made anew of
// its texts.
[[nodiscard]] bool holds_only_text(std::string_view id) noexcept;

// Links are 8-bit text without an encoding. That of a WXXX frame has a description in front.
[[nodiscard]] bool is_link(std::string_view id) noexcept;

}  // namespace brindle
