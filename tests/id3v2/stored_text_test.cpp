#include "id3v2/stored_text.h"

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace brindle {
namespace {

using namespace std::string_view_literals;
using FileBytes = std::vector<std::uint8_t>;

// The same text, as bytes of a file and as a host gave it. 0x80 is the euro sign.
const FileBytes kBytes{'a', 0, 0x80, 'b', 0};
constexpr std::u16string_view kWide = u"a\0\u20ACb\0"sv;

std::vector<StoredText> both_forms() {
    std::vector<StoredText> forms;
    forms.push_back(StoredText::in_file(kBytes));
    forms.emplace_back(kWide);
    return forms;
}

TEST(StoredText, BothFormsReadAlike) {
    for (const StoredText& text : both_forms()) {
        EXPECT_EQ(text.size(), 5U);
        EXPECT_FALSE(text.empty());
        EXPECT_EQ(text.wide(), kWide);
        EXPECT_TRUE(text == kWide);
        EXPECT_FALSE(text == u"a");
        EXPECT_FALSE(text == u"a\0\u20ACb\1"sv);
        EXPECT_EQ(text[2], u'\u20AC');
        EXPECT_EQ(text.find_nul(), 1U);
        EXPECT_EQ(text.find(u'b'), 3U);
        EXPECT_EQ(text.find(u'x'), 5U);
        EXPECT_EQ(text.share(2).wide(), u"\u20ACb\0"sv);
        EXPECT_EQ(text.share(5).wide(), u"");
        EXPECT_TRUE(text.equals(0, 1, u"a"));
        EXPECT_TRUE(text.equals(2, 4, u"\u20ACb"));
        EXPECT_FALSE(text.equals(2, 4, u"\u20AC"));
        EXPECT_FALSE(text.equals(2, 4, u"\u20ACc"));
        EXPECT_TRUE(text.equals(5, 5, u""));
    }
}

TEST(StoredText, ComparesInBothForms) {
    const FileBytes other_bytes{'a', 0, 0x80, 'b', 1};
    const StoredText other = StoredText::in_file(other_bytes);
    const StoredText other_units(u"a\0\u20ACb\1"sv);
    for (const StoredText& a : both_forms()) {
        for (const StoredText& b : both_forms()) {
            EXPECT_TRUE(a == b);
        }
        for (const StoredText* b : {&other, &other_units}) {
            EXPECT_FALSE(a == *b);
            EXPECT_FALSE(*b == a);
        }
        EXPECT_FALSE(a == a.share(1));
        EXPECT_FALSE(a.share(1) == a);
    }
}

TEST(StoredText, BothFormsAreWrittenAlike) {
    for (const StoredText& text : both_forms()) {
        FileBytes written{'<'};
        text.append_to(written);
        EXPECT_EQ(written, (FileBytes{'<', 'a', 0, 0x80, 'b', 0}));
    }
}

TEST(StoredText, CharactersOutsideTheCodePageAreWrittenAsQuestionMarks) {
    FileBytes written;
    StoredText(u"\u0416a").append_to(written);
    EXPECT_EQ(written, (FileBytes{'?', 'a'}));
}

TEST(StoredText, NothingIsEmptyInBothForms) {
    const StoredText none;
    const StoredText no_bytes = StoredText::in_file({});
    const StoredText no_units(u"");
    for (const StoredText* text : {&none, &no_bytes, &no_units}) {
        EXPECT_TRUE(text->empty());
        EXPECT_EQ(text->wide(), u"");
        EXPECT_TRUE(*text == u"");
        EXPECT_EQ(text->find_nul(), 0U);
    }
}

TEST(StoredText, SharesTheFilesBytes) {
    FileBytes bytes{'a', 'b'};
    const StoredText text = StoredText::in_file(bytes);
    const StoredText shared = text.share();
    bytes[0] = 'X';
    EXPECT_EQ(shared.wide(), u"Xb");
}

TEST(StoredText, ASharedHostTextIsACopy) {
    StoredText text(u"host");
    const StoredText copy = text.share();
    text = StoredText(u"other");
    EXPECT_EQ(copy.wide(), u"host");
}

TEST(StoredText, MovesItsText) {
    StoredText from(u"long enough for the heap");
    StoredText to(u"something else");
    to = std::move(from);
    EXPECT_EQ(to.wide(), u"long enough for the heap");
    const StoredText last(std::move(to));
    EXPECT_EQ(last.wide(), u"long enough for the heap");
}

TEST(StoredText, IsEmptyAfterItsTextWasMoved) {
    StoredText constructed_from(u"text");
    StoredText assigned_from(u"text");
    StoredText to(std::move(constructed_from));
    // NOLINTBEGIN(bugprone-use-after-move)
    EXPECT_EQ(constructed_from.size(), 0U);
    to = std::move(assigned_from);
    EXPECT_EQ(assigned_from.size(), 0U);
    // NOLINTEND(bugprone-use-after-move)
}

}  // namespace
}  // namespace brindle
