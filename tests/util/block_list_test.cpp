#include "util/block_list.h"

#include <memory>

#include <gtest/gtest.h>

namespace brindle {
namespace {

using List = BlockList<std::unique_ptr<int>>;

List filled(int count) {
    List list;
    for (int entry = 0; entry < count; ++entry) {
        list.push_back(std::make_unique<int>(entry));
    }
    return list;
}

TEST(BlockList, IsEmptyAtFirst) {
    const List list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.size(), 0U);
    EXPECT_TRUE(list.first_block().empty());
}

TEST(BlockList, KeepsTheOrderOverAllBlocks) {
    const List list = filled(2'000);
    ASSERT_EQ(list.size(), 2'000U);
    for (std::size_t entry = 0; entry < list.size(); ++entry) {
        ASSERT_EQ(*list[entry], static_cast<int>(entry));
    }
}

TEST(BlockList, FirstBlockLiesSideBySideAndEndsWhereTheSecondBegins) {
    EXPECT_EQ(filled(31).first_block().size(), 31U);
    EXPECT_EQ(filled(32).first_block().size(), 32U);
    EXPECT_EQ(filled(33).first_block().size(), 32U);
}

TEST(BlockList, EntriesStayWhereTheyAre) {
    List list = filled(1);
    const auto* const first = &list[0];
    for (int entry = 1; entry < 2'000; ++entry) {
        list.push_back(std::make_unique<int>(entry));
    }
    EXPECT_EQ(&list[0], first);
}

// 32 in the first block, 512 in each further one.
TEST(BlockList, LosesItsLastEntryAlsoWhereABlockBegins) {
    for (const int count : {1, 2, 32, 33, 34, 544, 545, 546}) {
        SCOPED_TRACE(count);
        List list = filled(count);
        list.pop_back();
        ASSERT_EQ(list.size(), static_cast<std::size_t>(count - 1));
        list.push_back(std::make_unique<int>(-1));
        EXPECT_EQ(*list.back(), -1);
        if (count > 1) {
            EXPECT_EQ(*list[list.size() - 2], count - 2);
        }
    }
}

}  // namespace
}  // namespace brindle
