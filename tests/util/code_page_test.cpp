#include "util/code_page.h"

#include <array>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace brindle {
namespace {

struct Special {
    int byte;
    char16_t unit;
};

// The bytes of Windows-1252 that are not the Unicode character of their own number.
const Special kSpecials[] = {
    {0x80, u'\u20AC'},  // euro sign
    {0x82, u'\u201A'},  // single low-9 quotation mark
    {0x83, u'\u0192'},  // small f with hook
    {0x84, u'\u201E'},  // double low-9 quotation mark
    {0x85, u'\u2026'},  // horizontal ellipsis
    {0x86, u'\u2020'},  // dagger
    {0x87, u'\u2021'},  // double dagger
    {0x88, u'\u02C6'},  // modifier letter circumflex accent
    {0x89, u'\u2030'},  // per mille sign
    {0x8A, u'\u0160'},  // capital S with caron
    {0x8B, u'\u2039'},  // single left-pointing angle quotation mark
    {0x8C, u'\u0152'},  // capital ligature OE
    {0x8E, u'\u017D'},  // capital Z with caron
    {0x91, u'\u2018'},  // left single quotation mark
    {0x92, u'\u2019'},  // right single quotation mark
    {0x93, u'\u201C'},  // left double quotation mark
    {0x94, u'\u201D'},  // right double quotation mark
    {0x95, u'\u2022'},  // bullet
    {0x96, u'\u2013'},  // en dash
    {0x97, u'\u2014'},  // em dash
    {0x98, u'\u02DC'},  // small tilde
    {0x99, u'\u2122'},  // trade mark sign
    {0x9A, u'\u0161'},  // small s with caron
    {0x9B, u'\u203A'},  // single right-pointing angle quotation mark
    {0x9C, u'\u0153'},  // small ligature oe
    {0x9E, u'\u017E'},  // small z with caron
    {0x9F, u'\u0178'},  // capital Y with diaeresis
};

std::vector<std::uint8_t> all_bytes() {
    std::vector<std::uint8_t> bytes(256);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(i);
    }
    return bytes;
}

TEST(CodePage, EveryByteHasTheCharacterOfWindows1252) {
    std::array<char16_t, 256> expected{};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        expected[i] = static_cast<char16_t>(i);
    }
    for (const Special& special : kSpecials) {
        expected[static_cast<std::size_t>(special.byte)] = special.unit;
    }
    for (const std::uint8_t byte : all_bytes()) {
        EXPECT_EQ(widen(byte), expected[byte]) << int{byte};
    }
}

TEST(CodePage, EveryByteComesBackAsItself) {
    std::set<char16_t> units;
    for (const std::uint8_t byte : all_bytes()) {
        EXPECT_EQ(narrow(widen(byte)), byte);
        units.insert(widen(byte));
    }
    EXPECT_EQ(units.size(), 256U);
}

TEST(CodePage, EveryOtherCharacterBecomesAQuestionMark) {
    int outside = 0;
    for (std::uint32_t value = 0; value <= 0xFFFF; ++value) {
        const auto unit = static_cast<char16_t>(value);
        if (widen(narrow(unit)) != unit) {
            EXPECT_EQ(narrow(unit), '?') << value;
            ++outside;
        }
    }
    EXPECT_EQ(outside, 0x10000 - 256);
    EXPECT_EQ(narrow(u'\u0080'), '?');  // the control character, whose byte is the euro sign
}

TEST(CodePage, ManyBytesAreWidenedLikeEach) {
    // Each length and start, so that special bytes are at every position of a run.
    const std::vector<std::uint8_t> bytes = all_bytes();
    for (std::size_t first = 0; first < bytes.size(); ++first) {
        for (std::size_t count = 0; count <= 40 && first + count <= bytes.size(); ++count) {
            String expected;
            for (std::size_t i = first; i < first + count; ++i) {
                expected.push_back(widen(bytes[i]));
            }
            ASSERT_EQ(widen(std::span(bytes).subspan(first, count)), expected);
        }
    }
}

TEST(CodePage, SpecialBytesBetweenAsciiKeepTheirPlace) {
    const std::uint8_t bytes[] = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 0x80, 'k', 0,
                                  'm', 'n', 'o', 'p', 'q', 'r', 's', 't', 'u', 'v',  'w', 0xFF};
    EXPECT_EQ(widen(std::span(bytes)), String(u"abcdefghi\u20ACk\0mnopqrstuvw\u00FF", 24));
}

}  // namespace
}  // namespace brindle
