#include "output/foreign_tags.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

namespace brindle::host {

namespace {

constexpr std::int64_t kApeFooter = 32;
constexpr std::string_view kApe = "APETAGEX";
constexpr std::string_view kLyrics3Begin = "LYRICSBEGIN";
constexpr std::string_view kLyrics3End = "LYRICS200";
constexpr std::int64_t kLyrics3Digits = 6;

// "APE Tags Header": little-endian numbers after the preamble.
std::uint32_t little_endian(std::string_view bytes, std::size_t offset) {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i > 0; --i) {
        number = number << 8U | static_cast<std::uint8_t>(bytes[offset + i - 1]);
    }
    return number;
}

std::int64_t ape_bytes(FileBytes& file, std::int64_t end) {
    constexpr std::size_t kSize = 12;
    constexpr std::size_t kFlags = 20;
    constexpr std::uint32_t kHasHeader = 0x8000'0000;
    if (end < kApeFooter) {
        return 0;
    }
    const std::string footer = file.read(end - kApeFooter, kApeFooter);
    if (footer.size() < static_cast<std::size_t>(kApeFooter) || !footer.starts_with(kApe)) {
        return 0;
    }
    // Items and footer.
    std::int64_t bytes = little_endian(footer, kSize);
    bytes += (little_endian(footer, kFlags) & kHasHeader) != 0 ? kApeFooter : 0;
    return std::clamp<std::int64_t>(bytes, kApeFooter, end);
}

// "Lyrics3 v2.00": the size in six digits, without these and the mark.
std::int64_t lyrics3_bytes(FileBytes& file, std::int64_t end) {
    constexpr auto kDigits = static_cast<std::size_t>(kLyrics3Digits);
    constexpr auto kTail = static_cast<std::int64_t>(kDigits + kLyrics3End.size());
    if (end < kTail) {
        return 0;
    }
    const std::string tail = file.read(end - kTail, static_cast<std::size_t>(kTail));
    if (!tail.ends_with(kLyrics3End)) {
        return 0;
    }
    std::int64_t bytes = 0;
    const auto [last, error] = std::from_chars(tail.data(), tail.data() + kDigits, bytes);
    const bool is_number = error == std::errc() && last == tail.data() + kDigits;
    return is_number ? std::min(bytes + kTail, end) : 0;
}

// Digits up to the end of the text; -1 for anything else.
std::int64_t number_in(std::string_view digits) {
    std::int64_t number = -1;
    const auto [last, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool is_number = error == std::errc() && last == digits.data() + digits.size();
    return is_number && number >= 0 ? number : -1;
}

//   [header] | items: size of the value, flags, key, NUL, value | footer: "APETAGEX", version, size
//   without the header, count of items, flags, 8 bytes
bool is_whole_ape(FileBytes& file, std::int64_t begin, std::int64_t end) {
    constexpr std::size_t kCount = 16;
    constexpr std::size_t kFlags = 20;
    constexpr std::uint32_t kHasHeader = 0x8000'0000;
    constexpr std::uint32_t kMaxItems = 65'536;
    constexpr std::size_t kItemHead = 8;
    constexpr std::size_t kLongestKey = 255;
    const std::int64_t items_end = end - kApeFooter;
    const std::string footer = file.read(items_end, kApeFooter);
    std::int64_t position = begin;
    if ((little_endian(footer, kFlags) & kHasHeader) != 0) {
        if (!file.read(begin, kApe.size()).starts_with(kApe)) {
            return false;
        }
        position += kApeFooter;
    }
    const std::uint32_t count = little_endian(footer, kCount);
    for (std::uint32_t i = 0; i < count && i < kMaxItems; ++i) {
        const std::string head = file.read(position, kItemHead + kLongestKey + 1);
        const std::size_t key_end = head.find('\0', std::min(head.size(), kItemHead));
        if (key_end == std::string::npos || key_end == kItemHead) {
            return false;
        }
        position += static_cast<std::int64_t>(key_end) + 1 + little_endian(head, 0);
        if (position > items_end) {
            return false;
        }
    }
    return position == items_end;
}

//   "LYRICSBEGIN" | fields: three letters, length in five digits, value | size in six digits |
//   "LYRICS200"
bool is_whole_lyrics3(FileBytes& file, std::int64_t begin, std::int64_t end) {
    constexpr std::size_t kId = 3;
    constexpr std::size_t kFieldHead = kId + 5;
    const std::int64_t fields_end =
        end - static_cast<std::int64_t>(kLyrics3End.size()) - kLyrics3Digits;
    if (file.read(begin, kLyrics3Begin.size()) != kLyrics3Begin) {
        return false;
    }
    std::int64_t position = begin + static_cast<std::int64_t>(kLyrics3Begin.size());
    while (position < fields_end) {
        const std::string head = file.read(position, kFieldHead);
        const std::int64_t length =
            head.size() < kFieldHead ? -1 : number_in(std::string_view(head).substr(kId));
        if (length < 0) {
            return false;
        }
        position += static_cast<std::int64_t>(kFieldHead) + length;
    }
    return position == fields_end;
}

}  // namespace

RemovableTags find_removable_tags(FileBytes& file, std::int64_t begin, std::int64_t end) {
    RemovableTags tags;
    tags.from = end;
    tags.to = end;
    for (;;) {
        const std::int64_t ape = ape_bytes(file, tags.from);
        const std::int64_t lyrics3 = ape != 0 ? 0 : lyrics3_bytes(file, tags.from);
        const std::int64_t from = tags.from - ape - lyrics3;
        if (from == tags.from) {
            return tags;
        }
        if (from < begin || !(ape != 0 ? is_whole_ape(file, from, tags.from)
                                       : is_whole_lyrics3(file, from, tags.from))) {
            tags.damaged = ape != 0 ? "APEv2" : "Lyrics3";
            return tags;
        }
        tags.from = from;
        tags.ape_bytes += ape;
        tags.lyrics3_bytes += lyrics3;
    }
}

ForeignTags find_foreign_tags(FileBytes& file, std::int64_t end) {
    ForeignTags tags;
    tags.lyrics3_bytes = lyrics3_bytes(file, end);
    tags.ape_bytes = ape_bytes(file, end - tags.lyrics3_bytes);
    if (tags.lyrics3_bytes == 0 && tags.ape_bytes != 0) {
        tags.lyrics3_bytes = lyrics3_bytes(file, end - tags.ape_bytes);
    }
    return tags;
}

}  // namespace brindle::host
