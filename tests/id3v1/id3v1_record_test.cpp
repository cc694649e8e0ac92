#include "id3v1/id3v1_record.h"

#include <array>
#include <string>

#include <gtest/gtest.h>

#include "support/bytes.h"
#include "support/id3v1.h"

namespace brindle {
namespace {

using test::Bytes;

Bytes text(const Id3v1Record& record, Id3v1Field field) {
    const auto bytes = record.text(field);
    return {bytes.begin(), bytes.end()};
}

Bytes bytes(const Id3v1Record& record) {
    return {record.bytes().begin(), record.bytes().end()};
}

TEST(Id3v1Record, FieldsFillThe128BytesWithoutAGap) {
    std::size_t next = 0;
    for (const Id3v1Field field :
         {kId3v1Identifier, kId3v1Title, kId3v1Artist, kId3v1Album, kId3v1Year, kId3v1Comment,
          kId3v1Zero, kId3v1Track, kId3v1Genre}) {
        EXPECT_EQ(field.offset, next);
        next = field.offset + field.width;
    }
    EXPECT_EQ(next, 128U);
}

TEST(Id3v1Record, EachFieldIsReadFromItsPlace) {
    // Every byte of the record is different from those of the other fields.
    const Bytes file = Bytes("TAG") + test::repeated(30, 't') + test::repeated(30, 'a') +
                       test::repeated(30, 'l') + test::repeated(4, '1') + test::repeated(28, 'c') +
                       Bytes{0, 7, 17};
    const auto record = Id3v1Record::parse(file);
    ASSERT_TRUE(record);
    EXPECT_EQ(text(*record, kId3v1Title), test::repeated(30, 't'));
    EXPECT_EQ(text(*record, kId3v1Artist), test::repeated(30, 'a'));
    EXPECT_EQ(text(*record, kId3v1Album), test::repeated(30, 'l'));
    EXPECT_EQ(text(*record, kId3v1Year), Bytes("1111"));
    EXPECT_EQ(text(*record, kId3v1Comment), test::repeated(28, 'c'));
    EXPECT_EQ(record->track(), 7);
    EXPECT_EQ(record->genre(), 17);
    EXPECT_EQ(bytes(*record), file);
}

TEST(Id3v1Record, ByteBetweenCommentAndTrackIsZeroAgainInWhatIsWritten) {
    test::Id3v1 fields{.title = "Song", .track = 9, .byte_125 = 'x'};
    const auto record = Id3v1Record::parse(fields.bytes());
    ASSERT_TRUE(record);
    fields.byte_125 = 0;
    EXPECT_EQ(bytes(*record), fields.bytes());
}

TEST(Id3v1Record, OnlyUpperCaseIdentifierMakesARecord) {
    for (const std::string identifier : {"tag", "Tag", "TAg", "TAH", "\0\0\0"}) {
        EXPECT_FALSE(Id3v1Record::parse(test::Id3v1{.identifier = identifier}.bytes()))
            << identifier;
    }
}

TEST(Id3v1Record, PartOfARecordIsNone) {
    const Bytes whole = test::Id3v1{.title = "Song"}.bytes();
    EXPECT_FALSE(Id3v1Record::parse(whole.first(127)));
    EXPECT_FALSE(Id3v1Record::parse(Bytes()));
    EXPECT_FALSE(Id3v1Record::parse(whole + Bytes("x")));
}

TEST(Id3v1Record, EmptyRecordIsSpacesWithoutTrackAndGenre) {
    EXPECT_EQ(bytes(Id3v1Record()), Bytes("TAG") + test::repeated(122, ' ') + Bytes({0, 0, 255}));
}

TEST(Id3v1Record, LongTextIsCutAndShortTextPadded) {
    Id3v1Record record;
    record.set_text(kId3v1Year, Bytes("12345"));
    EXPECT_EQ(text(record, kId3v1Year), Bytes("1234"));
    record.set_text(kId3v1Year, Bytes("12"));
    EXPECT_EQ(text(record, kId3v1Year), Bytes("12  "));
}

TEST(Id3v1Record, LowerCaseIdentifierIsOnlyTheThreeLowerCaseLetters) {
    EXPECT_TRUE(is_lower_case_id3v1_identifier(Bytes("tag")));
    EXPECT_FALSE(is_lower_case_id3v1_identifier(Bytes("TAG")));
    EXPECT_FALSE(is_lower_case_id3v1_identifier(Bytes("Tag")));
    EXPECT_FALSE(is_lower_case_id3v1_identifier(Bytes("ta")));
}

}  // namespace
}  // namespace brindle
