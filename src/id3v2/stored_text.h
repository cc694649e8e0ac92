// Text of a tag, kept as it came.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <brindle/values.h>

namespace brindle {

// Either bytes of the file, one character each, which somebody else keeps (ByteArena), or wide
// text that a host gave, which it owns. Widening waits until somebody asks for the text: most
// values of a tag, its pictures above all, are never asked for.
class StoredText {
public:
    StoredText() noexcept = default;
    [[nodiscard]] static StoredText in_file(std::span<const std::uint8_t> bytes) noexcept {
        StoredText text;
        text.data_ = bytes.data();
        text.size_ = static_cast<std::uint32_t>(bytes.size());
        return text;
    }
    explicit StoredText(std::u16string_view text);
    // No text at all, which is not an empty one.
    [[nodiscard]] static StoredText none() noexcept {
        StoredText text;
        text.form_ = Form::None;
        return text;
    }
    [[nodiscard]] bool is_none() const noexcept { return form_ == Form::None; }
    StoredText(const StoredText&) = delete;
    StoredText& operator=(const StoredText&) = delete;
    // What is moved from is empty.
    StoredText(StoredText&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)),
          size_(std::exchange(other.size_, 0)),
          form_(std::exchange(other.form_, Form::InFile)) {}
    StoredText& operator=(StoredText&& other) noexcept {
        if (this != &other) {
            release();
            data_ = std::exchange(other.data_, nullptr);
            size_ = std::exchange(other.size_, 0);
            form_ = std::exchange(other.form_, Form::InFile);
        }
        return *this;
    }
    ~StoredText() { release(); }

    // In characters.
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
    [[nodiscard]] String wide() const;
    // Without the NULs that separate parts of it.
    [[nodiscard]] String wide_without_nuls() const;
    [[nodiscard]] bool operator==(std::u16string_view text) const noexcept;
    // No text is the same as an empty one.
    [[nodiscard]] bool operator==(const StoredText& other) const noexcept;
    [[nodiscard]] char16_t operator[](std::size_t i) const noexcept;
    // The position of the first such character, which is one of ASCII; size() when there is none.
    [[nodiscard]] std::size_t find(char16_t character) const noexcept;
    [[nodiscard]] std::size_t find_nul() const noexcept { return find(u'\0'); }
    // The characters from `first` up to `last` are exactly `text`.
    [[nodiscard]] bool equals(std::size_t first, std::size_t last,
                              std::u16string_view text) const noexcept;
    // The text in the 8-bit code page, after what `into` holds already.
    void append_to(std::vector<std::uint8_t>& into) const;
    // A second view of the same file bytes, or a copy of the wide text, from a character on.
    [[nodiscard]] StoredText share(std::size_t from = 0) const;

private:
    enum class Form : std::uint8_t { InFile, Wide, None };

    void release() noexcept {
        if (is_wide()) {
            delete[] static_cast<const char16_t*>(data_);
        }
    }
    [[nodiscard]] bool is_wide() const noexcept { return form_ == Form::Wide; }
    [[nodiscard]] std::span<const std::uint8_t> bytes() const noexcept;
    [[nodiscard]] std::u16string_view units() const noexcept;

    // One pointer instead of a variant of two: a tag can hold a hundred thousand of these.
    const void* data_ = nullptr;
    std::uint32_t size_ = 0;
    Form form_ = Form::InFile;
};

}  // namespace brindle
