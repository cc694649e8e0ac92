#include "util/hash_index.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "support/counting_allocator.h"

namespace brindle {
namespace {

TEST(HashIndex, TextHashIsTheSameUnitByUnit) {
    TextHash hash;
    for (const char16_t unit : std::u16string(u"Cue In")) {
        hash.add(unit);
    }
    EXPECT_EQ(hash.value(), TextHash::of(u"Cue In"));
    EXPECT_NE(TextHash::of(u"Cue In"), TextHash::of(u"cue In"));
}

TEST(HashIndex, AnEmptyOneFindsNothing) {
    const HashIndex index;
    EXPECT_EQ(index.find(7, [](std::size_t) { return true; }), HashIndex::kNotFound);
}

// Few hashes for many entries, so that probing and moving up are what is tested.
RC_GTEST_PROP(HashIndex, FindsWhatALinearSearchFinds, ()) {
    HashIndex index;
    std::vector<std::uint32_t> keys;
    const auto hash_of = [&](std::size_t entry) { return keys[entry] % 7; };
    std::uint32_t next = 0;
    const auto steps = *rc::gen::inRange(0, 120);
    for (int step = 0; step < steps; ++step) {
        if (keys.empty() || *rc::gen::inRange(0, 4) != 0) {
            index.make_room(hash_of);
            keys.push_back(next++);
            index.add(keys.back() % 7, keys.size() - 1);
        } else {
            const auto entry = *rc::gen::inRange<std::size_t>(0, keys.size());
            keys.erase(keys.begin() + static_cast<std::ptrdiff_t>(entry));
            index.remove(entry, hash_of);
        }
    }
    for (std::uint32_t key = 0; key < next; ++key) {
        const auto found = std::find(keys.begin(), keys.end(), key);
        const std::size_t expected = found == keys.end()
                                         ? HashIndex::kNotFound
                                         : static_cast<std::size_t>(found - keys.begin());
        RC_ASSERT(index.find(key % 7, [&](std::size_t entry) { return keys[entry] == key; }) ==
                  expected);
    }
}

TEST(HashIndex, EmptiedOneHasRoom) {
    HashIndex index;
    const auto hash_of = [](std::size_t) { return 7U; };
    index.make_room(hash_of);
    index.add(7, 0);
    index.remove(0, hash_of);
    const auto before = test::allocations();
    index.make_room(hash_of);
    EXPECT_EQ(test::allocations(), before);
}

}  // namespace
}  // namespace brindle
