#include "id3v2/frame_form.h"

#include <gtest/gtest.h>

#include "support/bytes.h"

namespace brindle {
namespace {

using namespace std::string_view_literals;
using test::Bytes;

TEST(FrameForm, TextFramesAreThoseOfTextsLinksAndPeople) {
    for (const char* id : {"TIT2", "TT2", "TXXX", "WOAR", "WXX", "COMM", "ULT", "IPLS", "IPL"}) {
        EXPECT_TRUE(is_text_frame(id)) << id;
    }
    for (const char* id : {"APIC", "PIC", "PRIV", "COMR", ""}) {
        EXPECT_FALSE(is_text_frame(id)) << id;
    }
}

TEST(FrameForm, TextIsReadInEachEncoding) {
    struct Case {
        const char* name;
        std::string_view id;
        Bytes body;
        String text;
    };
    const Case cases[] = {
        {"8 bit", "TIT2", "\0\xC4"sv, u"\u00C4"},
        {"UTF-16 with a mark", "TIT2", "\1\xFF\xFE\xC4\0"sv, u"\u00C4"},
        {"UTF-16 with a swapped mark", "TIT2", "\1\xFE\xFF\0\xC4"sv, u"\u00C4"},
        {"UTF-16 without a mark", "TIT2", "\2\0\xC4"sv, u"\u00C4"},
        {"UTF-8", "TIT2", "\3\xC3\x84"sv, u"\u00C4"},
        {"unknown encoding: 8-bit text with it", "TIT2", "\4\xC4"sv, u"\u0004\u00C4"},
        {"nothing", "TIT2", "", u""},
        {"half a character at the end", "TIT2", "\1\xFF\xFEN\0o"sv, u"N"},
        {"plain link", "WOAR", "http://a", u"http://a"},
        {"language and description", "COMM", "\0engd\0Hi"sv, u"engdHi"},
        {"language alone", "COMM", "\0en"sv, u"en"},
        {"wide description of an 8-bit link", "WXXX", "\1\xFF\xFEN\0\0\0http://a"sv, u"Nhttp://a"},
        {"wide description without an end", "WXXX", "\1\xFF\xFEN\0"sv, u"N"},
        {"8-bit description without an end", "WXXX", "\0N"sv, u"N"},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(text_of_frame(row.id, row.body), row.text) << row.name;
    }
}

TEST(FrameForm, DescriptionEndsAtItsNulOrWithTheFrame) {
    EXPECT_EQ(description_of(Bytes("\0Cue In\0"
                                   "1500"sv)),
              u"Cue In");
    EXPECT_EQ(description_of(Bytes("\1\xFF\xFEN\0\0\0\xFF\xFE"
                                   "1\0"sv)),
              u"N");
    // Half a NUL is none.
    EXPECT_EQ(description_of(Bytes("\1\xFF\xFEN\0\0"sv)), u"N");
    EXPECT_EQ(description_of(Bytes("\0Cue"sv)), u"Cue");
    EXPECT_EQ(description_of({}), u"");
}

}  // namespace
}  // namespace brindle
