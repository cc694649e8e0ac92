#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <brindle/keyed_collection.h>

#include "support/counting_allocator.h"
#include "support/failing_allocation.h"
#include "support/raised_error.h"
#include "util/numeric_text.h"

namespace brindle {
namespace {

using test::error_number;

String key_number(std::int32_t number) {
    return u"TXXX:" + to_text(number);
}

TEST(KeyedCollection, KeepsTheOrderOfAdding) {
    KeyedCollection collection;
    collection.Add(String(u"second in the alphabet"), u"B");
    collection.Add(std::int32_t{7}, u"A");
    collection.AddKey(u"C");
    EXPECT_EQ(collection.Count(), 3);
    EXPECT_EQ(collection.Item(1), Variant(String(u"second in the alphabet")));
    EXPECT_EQ(collection.Item(2), Variant(std::int32_t{7}));
    EXPECT_EQ(collection.Item(3), Variant(String(u"C")));
}

TEST(KeyedCollection, FindsItemsUnderTheirKey) {
    KeyedCollection collection;
    collection.Add(std::int32_t{1}, u"TIT2");
    collection.Add(Empty{}, u"");
    collection.Add(2.5, String(u"TI\0", 3));
    EXPECT_EQ(collection.Item(u"TIT2"), Variant(std::int32_t{1}));
    EXPECT_EQ(collection.Item(u""), Variant(Empty{}));
    EXPECT_EQ(collection.Item(String(u"TI\0", 3)), Variant(2.5));
    EXPECT_TRUE(collection.Exists(u""));
    EXPECT_FALSE(collection.Exists(u"TI"));
}

TEST(KeyedCollection, KeysAreComparedExactly) {
    KeyedCollection collection;
    collection.AddKey(u"tit2");
    EXPECT_FALSE(collection.Exists(u"TIT2"));
    collection.AddKey(u"TIT2");
    EXPECT_EQ(collection.Item(u"tit2"), Variant(String(u"tit2")));
    EXPECT_EQ(collection.Count(), 2);
}

TEST(KeyedCollection, WhatIsMissingIsAnError) {
    KeyedCollection collection;
    EXPECT_EQ(error_number([&] { (void)collection.Item(1); }), 9);
    collection.AddKey(u"TIT2");
    EXPECT_EQ(error_number([&] { (void)collection.Item(0); }), 9);
    EXPECT_EQ(error_number([&] { (void)collection.Item(2); }), 9);
    EXPECT_EQ(error_number([&] { (void)collection.Item(-1); }), 9);
    EXPECT_EQ(error_number([&] { (void)collection.Item(u"TPE1"); }), 5);
    EXPECT_EQ(error_number([&] { collection.Remove(u"TPE1"); }), 5);
    EXPECT_EQ(collection.Count(), 1);
}

TEST(KeyedCollection, TakenKeyIsAnErrorAndChangesNothing) {
    KeyedCollection collection;
    collection.Add(std::int32_t{1}, u"TIT2");
    EXPECT_EQ(error_number([&] { collection.Add(std::int32_t{2}, u"TIT2"); }), 457);
    EXPECT_EQ(error_number([&] { collection.AddKey(u"TIT2"); }), 457);
    EXPECT_EQ(collection.Count(), 1);
    EXPECT_EQ(collection.Item(u"TIT2"), Variant(std::int32_t{1}));
}

TEST(KeyedCollection, RemovedKeyMayComeBackAtTheEnd) {
    KeyedCollection collection;
    collection.AddKey(u"A");
    collection.AddKey(u"B");
    collection.Remove(u"A");
    EXPECT_FALSE(collection.Exists(u"A"));
    EXPECT_EQ(collection.Item(1), Variant(String(u"B")));
    collection.Add(std::int32_t{2}, u"A");
    EXPECT_EQ(collection.Item(2), Variant(std::int32_t{2}));
}

TEST(KeyedCollection, AnyCharacterMayBeInAKey) {
    const String noncharacter{u'A', 0xFFFF};
    KeyedCollection collection;
    collection.AddKey(noncharacter);
    EXPECT_FALSE(collection.Exists(u"A"));
    collection.AddKey(u"A");
    EXPECT_EQ(collection.Item(noncharacter), Variant(noncharacter));
    EXPECT_EQ(collection.Item(u"A"), Variant(String(u"A")));
}

// Adds a key while the first allocation fails, then the second, and so on until it is added.
template <typename Add>
void add_when_memory_allows(KeyedCollection& collection, const String& key, Add add) {
    const std::int32_t before = collection.Count();
    bool added = false;
    for (std::uint64_t nth = 1; !added; ++nth) {
        ASSERT_LT(nth, 20U);
        added = test::FailingAllocation{.nth = nth}.run(add).completed;
        ASSERT_EQ(collection.Count(), before + (added ? 1 : 0));
        ASSERT_EQ(collection.Exists(key), added);
    }
}

TEST(KeyedCollection, MemoryThatRunsOutLeavesItAsItWas) {
    KeyedCollection collection;
    constexpr std::int32_t kMany = 300;
    // Of both kinds some find a table full: tables double after 2, 4, 8 entries and so on.
    const auto is_alone = [](std::int32_t number) { return number % 3 == 0; };
    for (std::int32_t i = 1; i <= kMany; ++i) {
        const String key = u"a key of some length, number " + key_number(i);
        if (is_alone(i)) {
            add_when_memory_allows(collection, key, [&] { collection.AddKey(key); });
        } else {
            add_when_memory_allows(collection, key, [&] { collection.Add(i, key); });
        }
    }
    ASSERT_EQ(collection.Count(), kMany);
    for (std::int32_t i = 1; i <= kMany; ++i) {
        const String key = u"a key of some length, number " + key_number(i);
        ASSERT_EQ(collection.Item(i), is_alone(i) ? Variant(key) : Variant(i));
        ASSERT_EQ(collection.Item(key), collection.Item(i));
    }
}

// Keys and items have separate tables, and either may be the full one.
TEST(KeyedCollection, KeyWithoutRoomForItsItemIsNotAdded) {
    constexpr std::uint64_t kTables = 2;
    test::for_each_failing_allocation(kTables, 20, [](test::FailingAllocation failing) {
        KeyedCollection collection;
        collection.Add(7, u"host");
        const test::FaultyRun run = failing.run([&] { collection.AddKey(u"TIT2"); });
        EXPECT_EQ(collection.Count(), run.completed ? 2 : 1);
        EXPECT_EQ(collection.Exists(u"TIT2"), run.completed);
        EXPECT_EQ(collection.Item(u"host"), Variant(7));
        return run.has_failed;
    });
}

TEST(KeyedCollection, KeysAreFoundWithoutMemoryForAnIndex) {
    KeyedCollection collection;
    constexpr std::int32_t kMany = 33;  // one more than are searched without
    for (std::int32_t i = 1; i <= kMany; ++i) {
        collection.AddKey(key_number(i));
    }
    const String first = key_number(1);
    const String last = key_number(kMany);
    const String missing = key_number(kMany + 1);
    const test::AllocationFault fault(1, true);
    EXPECT_TRUE(collection.Exists(first));
    EXPECT_TRUE(collection.Exists(last));
    EXPECT_FALSE(collection.Exists(missing));
    EXPECT_TRUE(fault.has_failed());
}

TEST(KeyedCollection, ManyKeysAreFoundAndTakenOneByOne) {
    constexpr std::int32_t kMany = 3000;
    KeyedCollection collection;
    for (std::int32_t i = 1; i <= kMany; ++i) {
        collection.Add(i, key_number(i));
    }
    for (std::int32_t i = 1; i <= kMany; ++i) {
        ASSERT_EQ(collection.Item(key_number(i)), Variant(i));
        ASSERT_EQ(collection.Item(i), Variant(i));
    }
    for (std::int32_t i = 2; i <= kMany; i += 2) {
        collection.Remove(key_number(i));
    }
    ASSERT_EQ(collection.Count(), kMany / 2);
    for (std::int32_t i = 1; i <= kMany; ++i) {
        ASSERT_EQ(collection.Exists(key_number(i)), i % 2 == 1);
    }
    EXPECT_EQ(collection.Item(kMany / 2), Variant(kMany - 1));
}

RC_GTEST_PROP(KeyedCollection, BehavesLikeAListOfPairs, ()) {
    // Few keys make taken and missing ones common, many make the index grow.
    const auto keys = *rc::gen::element(4, 12, 60);
    const auto steps = *rc::gen::inRange(0, 300);
    KeyedCollection collection;
    std::vector<std::pair<String, std::int32_t>> model;
    for (std::int32_t step = 0; step < steps; ++step) {
        const String key = key_number(*rc::gen::inRange(0, keys));
        const auto known = std::find_if(model.begin(), model.end(),
                                        [&key](const auto& pair) { return pair.first == key; });
        const bool exists = known != model.end();
        RC_ASSERT(collection.Exists(key) == exists);
        // Two in three add, so that it grows.
        if (*rc::gen::inRange(0, 3) == 0) {
            RC_ASSERT(error_number([&] { collection.Remove(key); }) == (exists ? 0 : 5));
            if (exists) {
                model.erase(known);
            }
        } else {
            RC_ASSERT(error_number([&] { collection.Add(step, key); }) == (exists ? 457 : 0));
            if (!exists) {
                model.emplace_back(key, step);
            }
        }
    }
    RC_ASSERT(collection.Count() == static_cast<std::int32_t>(model.size()));
    std::int32_t position = 0;
    for (const auto& [key, item] : model) {
        RC_ASSERT(collection.Item(++position) == Variant(item));
        RC_ASSERT(collection.Item(key) == Variant(item));
    }
}

}  // namespace
}  // namespace brindle
