#include "support/tags.h"

#include <stdexcept>

namespace brindle::test {
namespace {

constexpr std::size_t kTagHeader = 10;
const Bytes kNul = zeros(1);

enum Encoding : std::uint8_t { Latin1 = 0, Utf16 = 1, Utf8 = 3 };

Bytes one(std::uint8_t byte) {
    return repeated(1, byte);
}

// PIC names its format by three letters: "image/png" is PNG, "image/jpeg" JPG.
std::string picture_format(std::string_view mime) {
    return mime == "image/jpeg" ? "JPG" : mime == "image/png" ? "PNG" : "-->";
}

}  // namespace

Tag& Tag::frame(std::string_view id, const Bytes& body) {
    const auto size = static_cast<std::uint32_t>(body.size());
    if (version_ == 4) {
        frames_ += Bytes(id) + syncsafe(size) + zeros(2) + body;
        return *this;
    }
    return frame_claiming(id, size, body);
}

Tag& Tag::frame_claiming(std::string_view id, std::uint32_t size, const Bytes& body) {
    if (id.size() != (version_ == 2 ? 3U : 4U)) {
        throw std::invalid_argument("a frame id of another version");
    }
    frames_.insert(frames_.end(), id.begin(), id.end());
    frames_ += version_ == 2 ? big_endian(size, 3) : big_endian(size, 4) + zeros(2);
    frames_ += body;
    return *this;
}

Tag& Tag::text(std::string_view id, const Bytes& text) {
    return frame(id, one(Latin1) + text);
}

Tag& Tag::field(const Bytes& description, const Bytes& value) {
    return frame(version_ == 2 ? "TXX" : "TXXX", one(Latin1) + description + kNul + value);
}

Tag& Tag::comment(std::string_view language, const Bytes& description, const Bytes& text) {
    return frame(version_ == 2 ? "COM" : "COMM",
                 one(Latin1) + Bytes(language) + description + kNul + text);
}

Tag& Tag::lyrics(std::string_view language, const Bytes& description, const Bytes& text) {
    return frame(version_ == 2 ? "ULT" : "USLT",
                 one(Latin1) + Bytes(language) + description + kNul + text);
}

Tag& Tag::picture(std::string_view mime, std::uint8_t type, const Bytes& description,
                  const Bytes& data) {
    const Bytes format = version_ == 2 ? Bytes(picture_format(mime)) : Bytes(mime) + kNul;
    return frame(version_ == 2 ? "PIC" : "APIC",
                 one(Latin1) + format + one(type) + description + kNul + data);
}

Tag& Tag::utf16_text(std::string_view id, std::u16string_view text) {
    Bytes body{Utf16, 0xFF, 0xFE};
    for (const char16_t unit : text) {
        body += Bytes{static_cast<std::uint8_t>(unit % 256), static_cast<std::uint8_t>(unit / 256)};
    }
    return frame(id, body);
}

Tag& Tag::utf8_text(std::string_view id, std::string_view text) {
    return frame(id, one(Utf8) + Bytes(text));
}

Tag& Tag::raw(const Bytes& bytes) {
    frames_ += bytes;
    return *this;
}

Tag& Tag::padding(std::size_t count) {
    padding_ = count;
    return *this;
}

Tag& Tag::padded_to(std::size_t total) {
    if (total < kTagHeader + frames_.size()) {
        throw std::invalid_argument("the frames are longer than that");
    }
    return padding(total - kTagHeader - frames_.size());
}

Tag& Tag::size(std::uint32_t claimed) {
    claimed_size_ = claimed;
    return *this;
}

Tag& Tag::flags(std::uint8_t flags) {
    flags_ = flags;
    return *this;
}

Tag& Tag::revision(std::uint8_t revision) {
    revision_ = revision;
    return *this;
}

std::size_t Tag::length() const {
    return kTagHeader + frames_.size() + padding_;
}

Bytes Tag::bytes() const {
    const auto true_size = static_cast<std::uint32_t>(length() - kTagHeader);
    return Bytes("ID3") + one(static_cast<std::uint8_t>(version_)) + one(revision_) + one(flags_) +
           syncsafe(claimed_size_.value_or(true_size)) + frames_ + zeros(padding_);
}

}  // namespace brindle::test
