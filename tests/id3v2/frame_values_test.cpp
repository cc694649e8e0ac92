#include "id3v2/frame_values.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace brindle {
namespace {

std::string numbers_of(const FrameValues& values) {
    std::string numbers;
    for (std::size_t place = 0; place < values.size(); ++place) {
        numbers += std::to_string(values.slot(place).index) + ' ';
    }
    return numbers;
}

TEST(FrameValues, ATakenNumberIsRefused) {
    FrameValues values;
    EXPECT_TRUE(values.add(1, StoredText(u"a")));
    EXPECT_FALSE(values.add(1, StoredText(u"b")));
    EXPECT_EQ(values.find(1)->wide(), u"a");
}

TEST(FrameValues, TheFirstValueTakesItsCountAlong) {
    for (const std::int32_t count : {1, 2}) {
        FrameValues values;
        EXPECT_TRUE(values.add(1, StoredText(u"a"), count));
        EXPECT_EQ(values.count(), count);
    }
}

TEST(FrameValues, ARemovedNumberStaysFree) {
    FrameValues values;
    for (const std::int32_t number : {1, 2, 3}) {
        values.add(number, StoredText(u"v"));
    }
    EXPECT_TRUE(values.remove(2));
    EXPECT_FALSE(values.remove(2));
    EXPECT_EQ(values.find(2), nullptr);
    EXPECT_EQ(numbers_of(values), "1 3 ");
    EXPECT_TRUE(values.add(2, StoredText(u"w")));
    EXPECT_EQ(numbers_of(values), "1 2 3 ");
}

TEST(FrameValues, ARunFrom1EndsAtTheFirstGap) {
    FrameValues values;
    for (const std::int32_t number : {-4, 0, 1, 2, 4, 5}) {
        values.add(number, StoredText(u"v"));
    }
    EXPECT_EQ(values.remove_run_from_1(), 2U);
    EXPECT_EQ(numbers_of(values), "-4 0 4 5 ");
    EXPECT_EQ(values.remove_run_from_1(), 0U);
}

RC_GTEST_PROP(FrameValues, BehaveLikeAMap, ()) {
    FrameValues values;
    std::map<std::int32_t, String> map;
    const auto steps = *rc::gen::inRange(0, 40);
    for (int step = 0; step < steps; ++step) {
        const auto number = *rc::gen::inRange<std::int32_t>(-2, 8);
        switch (*rc::gen::inRange(0, 5)) {
            case 0:
            case 1:
            case 2: {
                const String text = *rc::gen::element<String>(u"a", u"", u"text of some length");
                RC_ASSERT(values.add(number, StoredText(text)) == map.emplace(number, text).second);
                break;
            }
            case 3:
                RC_ASSERT(values.remove(number) == (map.erase(number) == 1));
                break;
            default: {
                std::size_t removed = 0;
                for (std::int32_t next = 1; map.erase(next) == 1; ++next) {
                    ++removed;
                }
                RC_ASSERT(values.remove_run_from_1() == removed);
            }
        }
        RC_ASSERT(values.size() == map.size());
        std::size_t place = 0;
        for (const auto& [key, text] : map) {
            RC_ASSERT(values.slot(place).index == key);
            RC_ASSERT(values.slot(place).text.wide() == text);
            ++place;
        }
        for (std::int32_t key = -3; key < 9; ++key) {
            RC_ASSERT((values.find(key) != nullptr) == map.contains(key));
        }
    }
}

}  // namespace
}  // namespace brindle
