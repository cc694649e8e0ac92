// Bytes of a test file, put together with "+".
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace brindle::test {

struct Bytes : std::vector<std::uint8_t> {
    using vector::vector;
    Bytes(std::vector<std::uint8_t> bytes) : vector(std::move(bytes)) {}
    // One byte a character. A text with NULs needs a view: "a\0b"sv.
    Bytes(std::string_view text) : vector(text.begin(), text.end()) {}
    Bytes(const char* text) : Bytes(std::string_view(text)) {}
    Bytes(const std::string& text) : Bytes(std::string_view(text)) {}

    Bytes& operator+=(const Bytes& more) {
        insert(end(), more.begin(), more.end());
        return *this;
    }
    friend Bytes operator+(Bytes left, const Bytes& right) {
        left += right;
        return left;
    }

    [[nodiscard]] Bytes first(std::size_t count) const { return part(0, count); }
    [[nodiscard]] Bytes last(std::size_t count) const { return part(size() - count, count); }
    // Where the bytes end before it, the part does.
    [[nodiscard]] Bytes part(std::size_t offset, std::size_t count) const {
        return std::string_view(reinterpret_cast<const char*>(data()), size())
            .substr(offset, count);
    }
    [[nodiscard]] std::string text() const { return {begin(), end()}; }
};

inline Bytes repeated(std::size_t count, std::uint8_t byte) {
    return std::vector<std::uint8_t>(count, byte);
}

// Content that means nothing.
inline Bytes letters(std::size_t count) {
    return repeated(count, 'a');
}

inline Bytes zeros(std::size_t count) {
    return repeated(count, 0);
}

// Most significant byte first, `width` bytes.
inline Bytes big_endian(std::uint64_t number, std::size_t width) {
    Bytes bytes = zeros(width);
    for (std::size_t place = width; place > 0; --place) {
        bytes[place - 1] = static_cast<std::uint8_t>(number % 256);
        number /= 256;
    }
    return bytes;
}

// Four bytes of seven bits each, as in the header of an ID3v2 tag.
inline Bytes syncsafe(std::uint32_t number) {
    Bytes bytes = zeros(4);
    for (std::size_t place = 4; place > 0; --place) {
        bytes[place - 1] = static_cast<std::uint8_t>(number % 128);
        number /= 128;
    }
    return bytes;
}

}  // namespace brindle::test
