#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include <brindle/cMPEGHeader.h>

namespace brindle {
namespace {

struct ElapsedCase {
    std::int32_t ms;
    const char16_t* no_fractions;
    const char16_t* only_fractions;
    const char16_t* show_all;
};

TEST(ElapsedTime, ShowsMinutesSecondsAndTheFirstTwoDigitsOfTheRest) {
    const ElapsedCase cases[] = {
        {0, u"00:00", u".00", u"00:00.00"},
        {5, u"00:00", u".05", u"00:00.05"},
        {50, u"00:00", u".50", u"00:00.50"},
        {123, u"00:00", u".12", u"00:00.12"},
        {500, u"00:00", u".50", u"00:00.50"},
        {999, u"00:00", u".99", u"00:00.99"},
        {1000, u"00:01", u".00", u"00:01.00"},
        {1005, u"00:01", u".05", u"00:01.05"},
        {1050, u"00:01", u".50", u"00:01.50"},
        {59999, u"00:59", u".99", u"00:59.99"},
        {60000, u"01:00", u".00", u"01:00.00"},
        {62345, u"01:02", u".34", u"01:02.34"},
        {3725000, u"62:05", u".00", u"62:05.00"},
        {6000000, u"100:00", u".00", u"100:00.00"},
        // 2,147,483 seconds are 35,791 minutes and 23 seconds.
        {std::numeric_limits<std::int32_t>::max(), u"35791:23", u".64", u"35791:23.64"},
        // Signs go with each part; the two characters of the rest include its sign.
        {-5, u"00:00", u".-05", u"00:00.-05"},
        {-50, u"00:00", u".-05", u"00:00.-05"},
        {-123, u"00:00", u".-01", u"00:00.-01"},
        {-999, u"00:00", u".-09", u"00:00.-09"},
        {-1000, u"00:-01", u".00", u"00:-01.00"},
        {-61000, u"-01:-01", u".00", u"-01:-01.00"},
        {-62345, u"-01:-02", u".-03", u"-01:-02.-03"},
        {std::numeric_limits<std::int32_t>::min(), u"-35791:-23", u".-06", u"-35791:-23.-06"},
    };
    const cMPEGHeader header;
    for (const ElapsedCase& row : cases) {
        EXPECT_EQ(header.ElapsedTimeFromMs(row.ms, NoFractions), row.no_fractions) << row.ms;
        EXPECT_EQ(header.ElapsedTimeFromMs(row.ms, OnlyFractions), row.only_fractions) << row.ms;
        EXPECT_EQ(header.ElapsedTimeFromMs(row.ms, ShowAll), row.show_all) << row.ms;
    }
}

TEST(ElapsedTime, AnUnknownStyleIsEmpty) {
    const cMPEGHeader header;
    for (const std::int32_t style : {3, -1, 100}) {
        EXPECT_EQ(header.ElapsedTimeFromMs(62345, static_cast<eTimeDisplayStyle>(style)), u"");
    }
}

TEST(ElapsedTime, TheStyleOfTheObjectDoesNotCount) {
    cMPEGHeader header;
    header.TimeStyle(ShowAll);
    EXPECT_EQ(header.ElapsedTimeFromMs(62345), u"01:02");
    EXPECT_EQ(header.TimeStyle(), ShowAll);
}

TEST(ElapsedTime, PaddingIsAlwaysThere) {
    const cMPEGHeader header;
    EXPECT_EQ(header.ElapsedTimeFromMs(1005, ShowAll, false), u"00:01.05");
    EXPECT_EQ(header.ElapsedTimeFromMs(1005, ShowAll, true), u"00:01.05");
}

}  // namespace
}  // namespace brindle
