// The store by itself: what no single edit of a host shows.
#include "id3v2/frame_store.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/bytes.h"
#include "support/failing_allocation.h"
#include "util/numeric_text.h"

namespace brindle {
namespace {

using test::Bytes;
using test::FailingAllocation;
using test::FaultyRun;
using test::for_each_failing_allocation;

const Bytes kOld = "old";
const Bytes kNew = "new";

// "F100" and on.
std::string id_of(int number) {
    return "F" + std::to_string(100 + number);
}

TEST(FrameStore, IdThatWasRemovedIsListedAgainWhenItIsRead) {
    FrameStore store;
    store.append(frame_id("TIT2"), kOld);
    store.remove_frame(u"TIT2");
    ASSERT_FALSE(store.is_listed(u"TIT2"));
    store.append(frame_id("TIT2"), kNew);
    EXPECT_TRUE(store.is_listed(u"TIT2"));
    EXPECT_EQ(store.count(u"TIT2"), 1);
    EXPECT_EQ(store.value(u"TIT2", 1)->wide(), u"new");
    EXPECT_EQ(store.value_count(), 1);
}

// A host may list it under a key of its own as well.
TEST(FrameStore, CopyListsAnIdOnce) {
    FrameStore store;
    store.append(frame_id("TIT2"), kOld);
    store.frame_list()->Add(String(u"TIT2"), u"the host's");
    store.frame_list()->AddKey(u"TPE1");
    const FrameStore copied = store.copy();
    ASSERT_EQ(copied.frame_list()->Count(), 2);
    EXPECT_EQ(copied.frame_list()->Item(1), Variant(String(u"TIT2")));
    EXPECT_EQ(copied.frame_list()->Item(2), Variant(String(u"TPE1")));
    EXPECT_EQ(copied.value(u"TIT2", 1)->wide(), u"old");
}

TEST(FrameStore, FramesWaitWhileThereIsNoMemoryToSortThem) {
    constexpr int kIds = 200;
    for_each_failing_allocation(9, 1000, [&](FailingAllocation failing) {
        FrameStore store;
        for (int number = 0; number < kIds; ++number) {
            store.append(frame_id(id_of(number)), kOld);
            store.append(frame_id(id_of(number)), kNew);
        }
        const FaultyRun run = failing.run([&] { EXPECT_EQ(store.value_count(), 2 * kIds); });
        EXPECT_EQ(store.value_count(), 2 * kIds);
        EXPECT_EQ(store.frame_list()->Count(), kIds);
        for (int number = 0; number < kIds; ++number) {
            const std::string digits = id_of(number);
            const String id(digits.begin(), digits.end());
            EXPECT_EQ(store.frame_list()->Item(number + 1), Variant(id));
            EXPECT_EQ(store.value(id, 1)->wide(), u"old");
            EXPECT_EQ(store.value(id, 2)->wide(), u"new");
        }
        return run.has_failed;
    });
}

// The host had taken the id out of the list; its value is still there and keeps its number.
TEST(FrameStore, ValueThatThereIsNoMemoryForLeavesItsIdUnlisted) {
    for_each_failing_allocation(1, 100, [](FailingAllocation failing) {
        FrameStore store;
        store.append(frame_id("TIT2"), kOld);
        store.frame_list()->Remove(u"TIT2");
        const String id = u"TIT2";
        const FaultyRun run = failing.run([&] { store.add(id, u"new", 0); });
        EXPECT_EQ(store.is_listed(id), run.completed);
        EXPECT_EQ(store.count(id), 1);
        EXPECT_EQ(store.value(id, 1)->wide(), u"old");
        EXPECT_EQ(store.value_count(), 1);
        return run.has_failed;
    });
}

}  // namespace
}  // namespace brindle
