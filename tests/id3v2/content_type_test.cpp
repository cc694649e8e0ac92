#include "id3v2/content_type.h"

#include <optional>
#include <string_view>

#include <gtest/gtest.h>

#include <brindle/text.h>

namespace brindle {
namespace {

struct ContentTypeCase {
    std::u16string_view value;
    std::optional<int> number;
    std::u16string_view name;
};

// The number loses its last digit, and a single character after the parenthesis is no name.
TEST(ContentType, NumberAndNameOfAValue) {
    constexpr std::nullopt_t none = std::nullopt;
    const ContentTypeCase cases[] = {
        {u"(17)", 1, u"Classic Rock"},
        {u"(17)Rock", 1, u"Rock"},
        {u"(17)X", 1, u"Classic Rock"},
        {u"(17)XY", 1, u"XY"},
        {u"(17) X", 1, u" X"},
        {u"(255)", 25, u"Euro - Techno"},
        {u"(1470)", 147, u"Synth Pop"},
        {u"(1230)", 123, u""},
        {u"(2550)", 255, u""},
        {u"(2550)own", 255, u"own"},
        {u"(00)", 0, u"Blues"},
        {u"Rock", none, u"Rock"},
        {u"", none, u""},
        {u"17", none, u"17"},
        // One digit and none: nothing is left of it.
        {u"(1)", none, u"(1)"},
        {u"(1)Rock", none, u"(1)Rock"},
        {u"()", none, u"()"},
        {u"()Rock", none, u"()Rock"},
        {u")(", none, u")("},
        {u")17(", none, u")17("},
        {u"(17", none, u"(17"},
        {u"17)", none, u"17)"},
        {u"(", none, u"("},
        {u")", none, u")"},
        {u")(17)", none, u")(17)"},
        // 256 and -1 do not fit.
        {u"(2560)", none, u"(2560)"},
        {u"(2560)Rock", none, u"(2560)Rock"},
        {u"(-17)", none, u"(-17)"},
        {u"(99999999999990)", none, u"(99999999999990)"},
        {u"(RX)", none, u"(RX)"},
        {u"(CR)", none, u"(CR)"},
        {u"(1x0)", none, u"(1x0)"},
        // Other numbers: halves are rounded to even.
        {u"( 17)", 1, u"Classic Rock"},
        {u"(17 )", 17, u"Rock"},
        {u"(+17)", 1, u"Classic Rock"},
        {u"(1.50)", 2, u"Country"},
        {u"(2.50)", 2, u"Country"},
        {u"(1e10)", 10, u"New Age"},
        // More digits than any type for fractions holds: just above and just below a half.
        {u"(8.5000000000000000000000000000010)", 9, u"Metal"},
        {u"(8.50000000000000000000000000000000)", 8, u"Jazz"},
        {u"(9.4999999999999999999999999999990)", 9, u"Metal"},
        {u"(9.50000000000000000000000000000000)", 10, u"New Age"},
        // The first of each parenthesis counts.
        {u"(51)(39)", 5, u"(39)"},
        {u"Rock (17)", 1, u"Classic Rock"},
        {u"((17)", none, u"((17)"},
        {u"(17)Rock (live)", 1, u"Rock (live)"},
    };
    for (const ContentTypeCase& row : cases) {
        const ContentType type = read_content_type(StoredText(row.value));
        EXPECT_EQ(type.number, row.number) << to_utf8(row.value);
        EXPECT_EQ(type.name.wide(), row.name) << to_utf8(row.value);
    }
}

}  // namespace
}  // namespace brindle
