#include "id3v2/standard_fields.h"

#include <string_view>

#include <gtest/gtest.h>

#include "id3v2/tag_contents.h"

namespace brindle {
namespace {

constexpr std::u16string_view kWithNul = u"a\0b"sv;

TEST(StandardFields, RowsStandInTheOrderOfTheFields) {
    for (std::size_t place = 0; place < kStandardFieldCount; ++place) {
        EXPECT_EQ(static_cast<std::size_t>(kStandardFields[place].field), place);
    }
}

TEST(TagContents, LyricsAloneSurviveTheirTag) {
    TagContents tag;
    for (const StandardFieldRow& row : kStandardFields) {
        tag.set_answer(row.field, String(kWithNul));
    }
    TagContents next;
    next.take_lasting(tag);
    for (const StandardFieldRow& row : kStandardFields) {
        EXPECT_EQ(next.text(row.field),
                  row.field == StandardField::Lyrics ? String(kWithNul) : String())
            << static_cast<std::size_t>(row.field);
    }
}

TEST(StandardFields, AnAssignedCommentReplacesAllThatWereRead) {
    StandardFieldTexts fields;
    fields.add_comment(StoredText(u"a"));
    fields.add_comment(StoredText(u"b"));
    fields.set(StandardField::Comment, StoredText(u"c"));
    EXPECT_EQ(fields.get(StandardField::Comment), u"c");
}

}  // namespace
}  // namespace brindle
