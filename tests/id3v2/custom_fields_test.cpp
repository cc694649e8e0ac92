#include "id3v2/custom_fields.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace brindle {
namespace {

const std::vector<std::uint8_t> kName{'C', 'u', 'e', ' ', 0x80};
const std::vector<std::uint8_t> kFirst{'1'};
const std::vector<std::uint8_t> kSecond{'2'};

TEST(CustomFields, TheFirstValueReadIsKept) {
    CustomFields fields;
    fields.add_first(StoredText::in_file(kName), StoredText::in_file(kFirst));
    fields.add_first(StoredText::in_file(kName), StoredText::in_file(kSecond));
    ASSERT_NE(fields.find(u"Cue \u20AC"), nullptr);
    EXPECT_EQ(fields.find(u"Cue \u20AC")->wide(), u"1");
}

TEST(CustomFields, TheFirstValueReadIsKeptAmongManyFields) {
    CustomFields fields;
    for (char16_t letter = u'A'; letter < u'A' + 40; ++letter) {
        fields.set(String(1, letter), u"other");
    }
    fields.add_first(StoredText::in_file(kName), StoredText::in_file(kFirst));
    fields.add_first(StoredText::in_file(kName), StoredText::in_file(kSecond));
    ASSERT_NE(fields.find(u"Cue \u20AC"), nullptr);
    EXPECT_EQ(fields.find(u"Cue \u20AC")->wide(), u"1");
}

TEST(CustomFields, AnAssignedValueReplacesTheOneRead) {
    CustomFields fields;
    fields.add_first(StoredText::in_file(kName), StoredText::in_file(kFirst));
    fields.set(u"Cue \u20AC", u"3");
    EXPECT_EQ(fields.find(u"Cue \u20AC")->wide(), u"3");
}

TEST(CustomFields, NamesAreComparedExactly) {
    CustomFields fields;
    fields.set(u"Name", u"1");
    EXPECT_EQ(fields.find(u"name"), nullptr);
    EXPECT_EQ(fields.find(u"Name "), nullptr);
    EXPECT_EQ(fields.find(u""), nullptr);
    fields.set(u"name", u"2");
    fields.set(u"", u"3");
    EXPECT_EQ(fields.find(u"Name")->wide(), u"1");
    EXPECT_EQ(fields.find(u"name")->wide(), u"2");
    EXPECT_EQ(fields.find(u"")->wide(), u"3");
}

TEST(CustomFields, ThousandsAreFoundAgain) {
    CustomFields fields;
    const auto name = [](int number) {
        const std::string digits = std::to_string(number);
        return String(digits.begin(), digits.end());
    };
    for (int number = 0; number < 5000; ++number) {
        fields.set(name(number), name(number * 3));
    }
    for (int number = 0; number < 5000; ++number) {
        ASSERT_EQ(fields.find(name(number))->wide(), name(number * 3));
    }
    EXPECT_EQ(fields.find(name(5000)), nullptr);
}

}  // namespace
}  // namespace brindle
