#include "util/trim_chars.h"

#include <string>

#include <gtest/gtest.h>

namespace brindle {
namespace {

using namespace std::string_literals;

struct TrimCase {
    const char* name;
    String text;
    String set;
    std::int32_t compare;
    String trimmed;
};

TEST(TrimChars, StripsBothEndsOnly) {
    const TrimCase cases[] = {
        {"spaces around a text with one inside", u"  a b  ", u" ", kBinaryCompare, u"a b"},
        {"five spaces", u"     ", u" ", kBinaryCompare, u""},
        {"nothing", u"", u" ", kBinaryCompare, u""},
        {"either case", u"xXax", u"x", kTextCompare, u"a"},
        {"exact case", u"xXax", u"x", kBinaryCompare, u"Xa"},
        {"either case, capital in the set", u"xXax", u"X", kTextCompare, u"a"},
        {"empty set", u"  a  ", u"", kBinaryCompare, u"  a  "},
        {"empty set, nothing", u"", u"", kTextCompare, u""},
        {"left only", u"--a", u"-", kBinaryCompare, u"a"},
        {"right only", u"a--", u"-", kBinaryCompare, u"a"},
        {"several characters in any order", u"-+a+-b-+-", u"+-", kBinaryCompare, u"a+-b"},
        {"NUL is a character", u"\0a\0b\0"s, u"\0"s, kBinaryCompare, u"a\0b"s},
        {"NUL is no space", u"\0a "s, u" ", kBinaryCompare, u"\0a"s},
        {"accented letters", u"\u00E9\u00C9a\u00E9", u"\u00C9", kTextCompare, u"a"},
        {"accented letters, exact", u"\u00E9\u00C9a", u"\u00C9", kBinaryCompare, u"\u00E9\u00C9a"},
        {"letters outside Latin-1", u"\u0160\u0161\u0152\u0153a\u017D\u017E", u"\u0161\u0153\u017D",
         kTextCompare, u"a"},
        {"y with diaeresis", u"\u00FFa\u0178", u"\u00FF", kTextCompare, u"a"},
        {"times is not divided by", u"\u00D7a\u00F7", u"\u00D7", kTextCompare, u"a\u00F7"},
        {"sharp s is not y with diaeresis", u"\u00DFa", u"\u00FF", kTextCompare, u"\u00DFa"},
        {"signs have no case", u"@a`", u"@", kTextCompare, u"a`"},
        {"nor have brackets", u"[a{", u"[", kTextCompare, u"a{"},
    };
    for (const TrimCase& row : cases) {
        EXPECT_EQ(TrimChars(row.text, row.set, row.compare), row.trimmed) << row.name;
    }
}

TEST(TrimChars, ComparesByTheNumbersThatCallersHandOver) {
    EXPECT_EQ(TrimChars(u"xaX", u"x", 0), u"aX");
    EXPECT_EQ(TrimChars(u"xaX", u"x", 1), u"a");
}

}  // namespace
}  // namespace brindle
