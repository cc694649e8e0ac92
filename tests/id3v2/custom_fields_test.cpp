#include "id3v2/custom_fields.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace brindle {
namespace {

const std::vector<std::uint8_t> kFirst{'C', 'u', 'e', ' ', 0x80, 0, '1'};
const std::vector<std::uint8_t> kSecond{'C', 'u', 'e', ' ', 0x80, 0, '2'};

TEST(CustomFields, TheFirstValueReadIsKept) {
    CustomFields fields;
    fields.read(kFirst);
    fields.read(kSecond);
    EXPECT_EQ(fields.text(u"Cue \u20AC"), u"1");
}

TEST(CustomFields, TheFirstValueReadIsKeptAmongManyFields) {
    CustomFields fields;
    std::vector<std::vector<std::uint8_t>> others;
    for (std::uint8_t letter = 'A'; letter < 'A' + 40; ++letter) {
        others.push_back({letter, 0, 'x'});
    }
    for (const auto& other : others) {
        fields.read(other);
    }
    fields.read(kFirst);
    fields.read(kSecond);
    EXPECT_EQ(fields.text(u"Cue \u20AC"), u"1");
}

TEST(CustomFields, AnAssignedValueReplacesTheOneRead) {
    CustomFields fields;
    fields.read(kFirst);
    fields.set(u"Cue \u20AC", u"3");
    EXPECT_EQ(fields.text(u"Cue \u20AC"), u"3");
}

TEST(CustomFields, AFrameWithoutANulIsNoField) {
    const std::vector<std::uint8_t> frame{'C', 'u', 'e'};
    CustomFields fields;
    fields.read(frame);
    EXPECT_FALSE(fields.exists(u"Cue"));
    EXPECT_FALSE(fields.exists(u""));
    for (int count = 0; count < 40; ++count) {
        fields.read(frame);
    }
    EXPECT_FALSE(fields.exists(u"Cue"));
}

TEST(CustomFields, AValueEndsAtItsFirstNul) {
    const std::vector<std::uint8_t> frame{'A', 0, 'B', 0, 'C'};
    CustomFields fields;
    fields.read(frame);
    EXPECT_EQ(fields.text(u"A"), u"B");
    EXPECT_EQ(fields.text("A"), u"B");
    EXPECT_EQ(fields.text("B"), u"");
    EXPECT_FALSE(fields.exists(String(u"A\0B", 3))) << "no name holds a NUL";
}

TEST(CustomFields, AFieldMayBeWithoutNameOrValue) {
    const std::vector<std::uint8_t> frame{0};
    CustomFields fields;
    EXPECT_FALSE(fields.exists(u""));
    fields.read(frame);
    EXPECT_TRUE(fields.exists(u""));
    EXPECT_EQ(fields.text(u""), u"");
}

TEST(CustomFields, NulsOfAnAssignedTextAreNotHandedOut) {
    CustomFields fields;
    fields.set(String(u"A\0", 2), String(u"x\0y", 3));
    EXPECT_EQ(fields.text(String(u"A\0", 2)), u"xy");
}

TEST(CustomFields, NamesAreComparedExactly) {
    CustomFields fields;
    fields.set(u"Name", u"1");
    EXPECT_FALSE(fields.exists(u"name"));
    EXPECT_FALSE(fields.exists(u"Name "));
    EXPECT_FALSE(fields.exists(u""));
    fields.set(u"name", u"2");
    fields.set(u"", u"3");
    EXPECT_EQ(fields.text(u"Name"), u"1");
    EXPECT_EQ(fields.text("Name"), u"1");
    EXPECT_EQ(fields.text(u"name"), u"2");
    EXPECT_EQ(fields.text(u""), u"3");
}

TEST(CustomFields, ThousandsAreFoundAgain) {
    CustomFields fields;
    const auto name = [](int number) {
        const std::string digits = std::to_string(number);
        return String(digits.begin(), digits.end());
    };
    std::vector<std::vector<std::uint8_t>> frames;
    for (int number = 0; number < 5000; number += 2) {
        const std::string frame = std::to_string(number) + '\0' + std::to_string(number * 3);
        frames.emplace_back(frame.begin(), frame.end());
    }
    for (const auto& frame : frames) {
        fields.read(frame);
    }
    for (int number = 1; number < 5000; number += 2) {
        fields.set(name(number), name(number * 3));
    }
    for (int number = 0; number < 5000; ++number) {
        ASSERT_EQ(fields.text(name(number)), name(number * 3));
    }
    EXPECT_FALSE(fields.exists(name(5000)));
}

}  // namespace
}  // namespace brindle
