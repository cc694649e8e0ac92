#include "id3v2/stored_text.h"

#include <algorithm>

#include "util/code_page.h"
#include "util/find_byte.h"

namespace brindle {

StoredText::StoredText(std::u16string_view text) {
    if (text.empty()) {
        return;
    }
    auto* units = new char16_t[text.size()];
    std::copy(text.begin(), text.end(), units);
    data_ = units;
    size_ = static_cast<std::uint32_t>(text.size());
    form_ = Form::Wide;
}

std::span<const std::uint8_t> StoredText::bytes() const noexcept {
    return {static_cast<const std::uint8_t*>(data_), size_};
}

std::u16string_view StoredText::units() const noexcept {
    return {static_cast<const char16_t*>(data_), size_};
}

String StoredText::wide() const {
    return is_wide() ? String(units()) : widen(bytes());
}

String StoredText::wide_without_nuls() const {
    if (find_nul() == size()) {
        return wide();
    }
    String text = wide();
    std::erase(text, u'\0');
    return text;
}

bool StoredText::operator==(std::u16string_view text) const noexcept {
    return equals(0, size_, text);
}

bool StoredText::operator==(const StoredText& other) const noexcept {
    if (is_wide()) {
        return other == units();
    }
    return other.is_wide() ? *this == other.units() : std::ranges::equal(bytes(), other.bytes());
}

char16_t StoredText::operator[](std::size_t i) const noexcept {
    return is_wide() ? units()[i] : widen(bytes()[i]);
}

std::size_t StoredText::find(char16_t character) const noexcept {
    if (is_wide()) {
        return std::min(units().find(character), std::size_t{size_});
    }
    return find_byte(bytes(), static_cast<std::uint8_t>(character));
}

bool StoredText::equals(std::size_t first, std::size_t last,
                        std::u16string_view text) const noexcept {
    if (last - first != text.size()) {
        return false;
    }
    if (is_wide()) {
        return units().substr(first, text.size()) == text;
    }
    return std::equal(text.begin(), text.end(),
                      bytes().begin() + static_cast<std::ptrdiff_t>(first),
                      [](char16_t unit, std::uint8_t byte) {
                          // All code pages agree on ASCII.
                          constexpr std::uint8_t kFirstOther = 0x80;
                          return unit == (byte < kFirstOther ? byte : widen(byte));
                      });
}

void StoredText::append_to(std::vector<std::uint8_t>& into) const {
    if (is_wide()) {
        for (const char16_t unit : units()) {
            into.push_back(narrow(unit));
        }
    } else {
        into.insert(into.end(), bytes().begin(), bytes().end());
    }
}

StoredText StoredText::share(std::size_t from) const {
    return is_wide() ? StoredText(units().substr(from)) : in_file(bytes().subspan(from));
}

}  // namespace brindle
