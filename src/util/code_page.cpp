#include "util/code_page.h"

#include <array>
#include <cstddef>
#include <cstring>

#include "util/code_page_table.h"
#ifdef _WIN32
#include "util/code_page_windows.h"
#endif

namespace brindle {
namespace {

// The code points of the bytes 80 to 9F; all other bytes are equal to their code points.
constexpr std::size_t kFirstSpecial = 0x80;
constexpr std::array<char16_t, 32> kSpecial = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 88
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 98
};

constexpr CodePageTable::Units windows_1252() {
    CodePageTable::Units units{};
    for (std::size_t byte = 0; byte < units.size(); ++byte) {
        const bool is_special = byte >= kFirstSpecial && byte < kFirstSpecial + kSpecial.size();
        units[byte] = is_special ? kSpecial[byte - kFirstSpecial] : static_cast<char16_t>(byte);
    }
    return units;
}

#ifdef _WIN32
const CodePageTable& page() {
    static const CodePageTable table(system_code_page().value_or(windows_1252()));
    return table;
}
#else
constexpr CodePageTable kPage(windows_1252());

constexpr const CodePageTable& page() {
    return kPage;
}
#endif

// Looked at at once; the last run of a text reaches back into the one before it.
constexpr std::size_t kRun = 8;

bool is_ascii(std::span<const std::uint8_t> bytes) noexcept {
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    const auto bits_at = [&](std::size_t at) {
        std::uint64_t run = 0;
        std::memcpy(&run, bytes.data() + at, kRun);
        return run;
    };
    const std::size_t last = bytes.size() - kRun;
    std::uint64_t bits = bits_at(last);
    for (std::size_t at = 0; at < last; at += kRun) {
        bits |= bits_at(at);
    }
    return (bits & kHighBits) == 0;
}

String widen_each(const CodePageTable& table, std::span<const std::uint8_t> bytes) {
    String text(bytes.size(), u'\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        text[i] = table.unit_of(bytes[i]);
    }
    return text;
}

}  // namespace

char16_t widen(std::uint8_t byte) noexcept {
    return page().unit_of(byte);
}

String widen(std::span<const std::uint8_t> bytes) {
    // Nearly all text is ASCII, where widening is no more than making room.
    if (bytes.size() >= kRun && is_ascii(bytes)) {
        return {bytes.begin(), bytes.end()};
    }
    return widen_each(page(), bytes);
}

std::uint8_t narrow(char16_t unit) noexcept {
    return page().byte_of(unit);
}

bool is_read_alike(char16_t unit) noexcept {
    constexpr char16_t kFirstOther = 0x80;
    constexpr char16_t kFirstPrintable = 0xA0;  // 80 to 9F are control characters
    constexpr char16_t kLast = 0xFF;
    if (unit < kFirstOther) {
        return unit != 0;
    }
    return unit >= kFirstPrintable && unit <= kLast &&
           widen(static_cast<std::uint8_t>(unit)) == unit;
}

}  // namespace brindle
