#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <brindle/text.h>

namespace brindle {
namespace {

using namespace std::string_literals;

struct TextCase {
    const char* name;
    std::string bytes;
    String units;
};

// These go both ways.
const TextCase kPairs[] = {
    {"nothing", "", u""},
    {"ASCII around a NUL", "a\0b"s, u"a\0b"s},
    {"last of one byte", "\x7F", u"\u007F"},
    {"first of two bytes", "\xC2\x80", u"\u0080"},
    {"last of two bytes", "\xDF\xBF", u"\u07FF"},
    {"first of three bytes", "\xE0\xA0\x80", u"\u0800"},
    {"last before the surrogates", "\xED\x9F\xBF", u"\uD7FF"},
    {"first after the surrogates", "\xEE\x80\x80", u"\uE000"},
    {"last of three bytes", "\xEF\xBF\xBF", u"\uFFFF"},
    {"first of four bytes", "\xF0\x90\x80\x80", u"\xD800\xDC00"},
    {"an emoji", "\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
    {"last code point", "\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"},
    {"lone continuation byte", "\x80", u"\xDC80"},
    {"lone last continuation byte", "\xBF", u"\xDCBF"},
    {"byte FE", "\xFE", u"\xDCFE"},
    {"byte FF", "\xFF", u"\xDCFF"},
    {"lead byte at the end", "a\xC3", u"a\xDCC3"},
    {"lead byte before ASCII", "\xC3(", u"\xDCC3("},
    {"two of three bytes", "\xE2\x82", u"\xDCE2\xDC82"},
    {"two of three bytes before ASCII", "\xE2\x82x", u"\xDCE2\xDC82x"},
    {"three of four bytes", "\xF0\x9F\x98", u"\xDCF0\xDC9F\xDC98"},
    {"overlong NUL", "\xC0\x80", u"\xDCC0\xDC80"},
    {"overlong of two bytes", "\xC1\xBF", u"\xDCC1\xDCBF"},
    {"overlong of three bytes", "\xE0\x9F\xBF", u"\xDCE0\xDC9F\xDCBF"},
    {"overlong of four bytes", "\xF0\x8F\xBF\xBF", u"\xDCF0\xDC8F\xDCBF\xDCBF"},
    {"encoded high surrogate", "\xED\xA0\x80", u"\xDCED\xDCA0\xDC80"},
    {"encoded low surrogate", "\xED\xBF\xBF", u"\xDCED\xDCBF\xDCBF"},
    {"above the last code point", "\xF4\x90\x80\x80", u"\xDCF4\xDC90\xDC80\xDC80"},
    {"lead byte of no code point", "\xF5\x80\x80\x80", u"\xDCF5\xDC80\xDC80\xDC80"},
    {"valid after invalid", "\xC3\xC3\xA9", u"\xDCC3\u00E9"},
};

TEST(Text, Utf8BecomesUnits) {
    for (const TextCase& row : kPairs) {
        EXPECT_EQ(from_utf8(row.bytes), row.units) << row.name;
    }
}

TEST(Text, UnitsBecomeUtf8) {
    for (const TextCase& row : kPairs) {
        EXPECT_EQ(to_utf8(row.units), row.bytes) << row.name;
    }
}

TEST(Text, LoneSurrogatesBecomeTheReplacementCharacter) {
    const TextCase cases[] = {
        {"high", "\xEF\xBF\xBD", u"\xD800"},
        {"last high", "\xEF\xBF\xBD", u"\xDBFF"},
        {"low below the stray bytes", "\xEF\xBF\xBD", u"\xDC7F"},
        {"low above the stray bytes", "\xEF\xBF\xBD", u"\xDD00"},
        {"high before ASCII",
         "\xEF\xBF\xBD"
         "a",
         u"\xD83D"
         u"a"},
        {"high before a pair", "\xEF\xBF\xBD\xF0\x90\x80\x80", u"\xD800\xD800\xDC00"},
        {"the wrong way round", "\xEF\xBF\xBD\xEF\xBF\xBD", u"\xDE00\xD83D"},
    };
    for (const TextCase& row : cases) {
        EXPECT_EQ(to_utf8(row.units), row.bytes) << row.name;
    }
}

TEST(Text, EveryCodePointComesBackAndHasItsLength) {
    for (std::uint32_t point = 0; point <= 0x10FFFF; ++point) {
        if (point >= 0xD800 && point < 0xE000) {
            continue;
        }
        String units;
        if (point < 0x10000) {
            units = {static_cast<char16_t>(point)};
        } else {
            units = {static_cast<char16_t>(0xD7C0 + point / 0x400),
                     static_cast<char16_t>(0xDC00 + point % 0x400)};
        }
        const std::string bytes = to_utf8(units);
        const std::size_t length = point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
        ASSERT_EQ(bytes.size(), length) << point;
        ASSERT_EQ(from_utf8(bytes), units) << point;
    }
}

RC_GTEST_PROP(Text, AnyBytesComeBack, ()) {
    // Mostly bytes that mean something in UTF-8, so that nearly valid sequences are common.
    const auto byte = rc::gen::weightedOneOf<std::uint8_t>(
        {{1, rc::gen::arbitrary<std::uint8_t>()},
         {3, rc::gen::elementOf(std::vector<std::uint8_t>{0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0,
                                                          0xBF, 0xC0, 0xC2, 0xDF, 0xE0, 0xE1, 0xED,
                                                          0xEF, 0xF0, 0xF1, 0xF4, 0xF5, 0xFF})}});
    const auto bytes = *rc::gen::container<std::vector<std::uint8_t>>(byte);
    const std::string text(bytes.begin(), bytes.end());
    RC_ASSERT(to_utf8(from_utf8(text)) == text);
}

}  // namespace
}  // namespace brindle
