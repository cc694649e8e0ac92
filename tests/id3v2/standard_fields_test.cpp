#include "id3v2/standard_fields.h"

#include <string_view>

#include <gtest/gtest.h>

namespace brindle {
namespace {

constexpr std::u16string_view kWithNul = u"a\0b"sv;

TEST(StandardFields, RowsStandInTheOrderOfTheFields) {
    for (std::size_t place = 0; place < kStandardFieldCount; ++place) {
        EXPECT_EQ(static_cast<std::size_t>(kStandardFields[place].field), place);
    }
}

TEST(StandardFields, LyricsAloneSurviveClearing) {
    StandardFieldTexts fields;
    for (const StandardFieldRow& row : kStandardFields) {
        fields.set(row.field, StoredText(kWithNul));
    }
    fields.add_comment(StoredText(u"more"));
    fields.clear_all_but_lyrics();
    for (const StandardFieldRow& row : kStandardFields) {
        EXPECT_EQ(fields.get(row.field),
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
