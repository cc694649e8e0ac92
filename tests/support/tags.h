// ID3v2 tags as tests need them: right ones, and wrong ones on purpose.
//
//   Tag(3).text("TIT2", "Song").field("Cue In", "1500").padding(100).bytes()
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "support/bytes.h"

namespace brindle::test {

class Tag {
public:
    explicit Tag(int version = 3) : version_(version) {}

    // A frame whose size is the one of its body, as the tag's version writes it: 3 bytes (version
    // 2), 4 bytes (3), 4 syncsafe bytes (4). Ids are those of the tag's version.
    Tag& frame(std::string_view id, const Bytes& body);
    // A frame with any claimed size, in plain big-endian bytes whatever the version.
    Tag& frame_claiming(std::string_view id, std::uint32_t size, const Bytes& body);

    // Frames in ISO-8859-1.
    Tag& text(std::string_view id, const Bytes& text);
    Tag& field(const Bytes& description, const Bytes& value);  // TXXX, TXX
    Tag& comment(std::string_view language, const Bytes& description, const Bytes& text);
    Tag& lyrics(std::string_view language, const Bytes& description, const Bytes& text);
    // APIC; in version 2 PIC, whose format are the three letters in capitals after "image/".
    Tag& picture(std::string_view mime, std::uint8_t type, const Bytes& description,
                 const Bytes& data);

    // Frames in other encodings.
    Tag& utf16_text(std::string_view id, std::u16string_view text);  // little-endian, with mark
    Tag& utf8_text(std::string_view id, std::string_view text);

    // Any bytes in the place of a frame.
    Tag& raw(const Bytes& bytes);
    // NULs after the last frame; they count in the tag's size.
    Tag& padding(std::size_t count);
    // The total of header, frames and padding is to be this.
    Tag& padded_to(std::size_t total);

    // Header fields that say something else than the truth.
    Tag& size(std::uint32_t claimed);
    Tag& flags(std::uint8_t flags);
    Tag& revision(std::uint8_t revision);

    [[nodiscard]] Bytes bytes() const;
    // Header, frames and padding.
    [[nodiscard]] std::size_t length() const;

private:
    int version_;
    std::uint8_t revision_ = 0;
    std::uint8_t flags_ = 0;
    std::optional<std::uint32_t> claimed_size_;
    std::size_t padding_ = 0;
    Bytes frames_;
};

// A frame with flags, for Tag::raw(); in version 3, and in version 4 as long as its size is below
// 128.
inline Bytes flagged(std::string_view id, std::uint8_t flags, const Bytes& body) {
    return Bytes(id) + big_endian(body.size(), 4) + Bytes{0, flags} + body;
}

inline Bytes operator+(const Tag& tag, const Bytes& more) {
    return tag.bytes() + more;
}

}  // namespace brindle::test
