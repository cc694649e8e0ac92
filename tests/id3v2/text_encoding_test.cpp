#include "id3v2/text_encoding.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/bytes.h"

namespace brindle {
namespace {

using namespace std::string_view_literals;
using test::Bytes;

struct Case {
    const char* name;
    TextEncoding encoding;
    std::string_view text;
    std::string_view utf16;
};

// By the Unicode standard: FF FE is the mark of little-endian UTF-16.
constexpr Case kCases[] = {
    {"BigEndian", TextEncoding::Utf16BigEndian, "\0A"sv,
     "\xFF\xFE"
     "A\0"sv},
    {"MarkedBigEndian", TextEncoding::Utf16BigEndian, "\xFE\xFF\0A"sv,
     "\xFF\xFE"
     "A\0"sv},
    {"MarkedLittleEndian", TextEncoding::Utf16BigEndian,
     "\xFF\xFE"
     "A\0"sv,
     "\xFF\xFE"
     "A\0"sv},
    {"EachStringHasAMark", TextEncoding::Utf16BigEndian, "\0A\0\0\0B"sv,
     "\xFF\xFE"
     "A\0\0\0\xFF\xFE"
     "B\0"sv},
    {"MarkInsideAStringIsACharacter", TextEncoding::Utf16BigEndian, "\0A\xFE\xFF"sv,
     "\xFF\xFE"
     "A\0\xFF\xFE"sv},
    {"Utf8", TextEncoding::Utf8, "A\xC3\x84"sv,
     "\xFF\xFE"
     "A\0\xC4\0"sv},
    {"MarkedUtf8", TextEncoding::Utf8,
     "\xEF\xBB\xBF"
     "A"sv,
     "\xFF\xFE"
     "A\0"sv},
    {"SurrogatesOfUtf8", TextEncoding::Utf8, "\xF0\x9F\x8E\xB5"sv,  // U+1F3B5
     "\xFF\xFE\x3C\xD8\xB5\xDF"sv},
    {"NotUtf8", TextEncoding::Utf8, "\xFF"sv, "\xFF\xFE\xFD\xFF"sv},
};

TEST(TextEncoding, BecomesMarkedUtf16) {
    for (const Case& test : kCases) {
        const Bytes text(test.text);
        const std::vector<std::uint8_t> written =
            to_marked_utf16(test.encoding, std::vector<std::uint8_t>(text.begin(), text.end()));
        const Bytes expected(test.utf16);
        EXPECT_EQ(written, std::vector<std::uint8_t>(expected.begin(), expected.end()))
            << test.name;
    }
}

}  // namespace
}  // namespace brindle
