// The encodings of text in frames, and text of versions 2.4 and 2.2 as version 2.3 can hold it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <brindle/values.h>

#include "util/byte_source.h"

namespace brindle {

// The first byte of a text frame.
enum class TextEncoding : std::uint8_t { Latin1 = 0, Utf16 = 1, Utf16BigEndian = 2, Utf8 = 3 };
inline constexpr std::uint8_t kLastEncoding = 3;

// Version 2.3 knows Latin-1 and UTF-16 with a byte order mark alone.
[[nodiscard]] constexpr bool is_of_version3(TextEncoding encoding) noexcept {
    return encoding == TextEncoding::Latin1 || encoding == TextEncoding::Utf16;
}

// How many bytes end a string.
[[nodiscard]] constexpr std::size_t terminator_size(TextEncoding encoding) noexcept {
    return encoding == TextEncoding::Utf16 || encoding == TextEncoding::Utf16BigEndian ? 2 : 1;
}

// The length of the string that the bytes begin with, without its terminator; that of all bytes
// where there is none.
[[nodiscard]] std::size_t string_length(TextEncoding encoding,
                                        std::span<const std::uint8_t> bytes) noexcept;

// One string, without byte order marks.
[[nodiscard]] String decoded(TextEncoding encoding, std::span<const std::uint8_t> bytes);

// Text in UTF-8 or big-endian UTF-16, of any number of strings, as little-endian UTF-16, each
// string with a byte order mark of its own. Terminators stay where they are. What is no text in the
// old encoding becomes U+FFFD. The `stamp_size` bytes after each terminator are copied as they are.
[[nodiscard]] std::vector<std::uint8_t> to_marked_utf16(TextEncoding encoding,
                                                        std::span<const std::uint8_t> bytes,
                                                        std::size_t stamp_size = 0);
// The same of a stream.
[[nodiscard]] std::unique_ptr<ByteStream> to_marked_utf16(TextEncoding encoding,
                                                          std::unique_ptr<ByteStream> bytes,
                                                          std::size_t stamp_size = 0);

// A string of the program as little-endian UTF-16 with its mark.
[[nodiscard]] std::vector<std::uint8_t> marked_utf16(const String& text);

}  // namespace brindle
