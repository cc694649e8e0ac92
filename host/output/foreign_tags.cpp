#include "output/foreign_tags.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

namespace brindle::host {

namespace {

constexpr std::int64_t kApeFooter = 32;
constexpr std::string_view kApe = "APETAGEX";

// "APE Tags Header": little-endian numbers after the preamble.
std::uint32_t little_endian(std::string_view bytes, std::size_t offset) {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i > 0; --i) {
        number = number << 8U | static_cast<std::uint8_t>(bytes[offset + i - 1]);
    }
    return number;
}

std::int64_t ape_bytes(ReadOnlyFile& file, std::int64_t end) {
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
std::int64_t lyrics3_bytes(ReadOnlyFile& file, std::int64_t end) {
    constexpr std::string_view kMark = "LYRICS200";
    constexpr std::size_t kDigits = 6;
    constexpr auto kTail = static_cast<std::int64_t>(kDigits + kMark.size());
    if (end < kTail) {
        return 0;
    }
    const std::string tail = file.read(end - kTail, static_cast<std::size_t>(kTail));
    if (!tail.ends_with(kMark)) {
        return 0;
    }
    std::int64_t bytes = 0;
    const auto [last, error] = std::from_chars(tail.data(), tail.data() + kDigits, bytes);
    const bool is_number = error == std::errc() && last == tail.data() + kDigits;
    return is_number ? std::min(bytes + kTail, end) : 0;
}

}  // namespace

ForeignTags find_foreign_tags(ReadOnlyFile& file, std::int64_t end) {
    ForeignTags tags;
    tags.lyrics3_bytes = lyrics3_bytes(file, end);
    tags.ape_bytes = ape_bytes(file, end - tags.lyrics3_bytes);
    if (tags.lyrics3_bytes == 0 && tags.ape_bytes != 0) {
        tags.lyrics3_bytes = lyrics3_bytes(file, end - tags.ape_bytes);
    }
    return tags;
}

}  // namespace brindle::host
