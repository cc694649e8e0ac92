// Runs code while memory runs out. Needs brindle_test_allocations, see counting_allocator.h.
#pragma once

#include <cstdint>
#include <new>

#include <gtest/gtest.h>

#include "support/counting_allocator.h"

namespace brindle::test {

struct FaultyRun {
    bool has_failed = false;  // false: the statement made fewer allocations
    bool completed = false;   // false: std::bad_alloc left the statement
};

// The allocation of a statement that fails, from 1 on; every later one too if `from_then_on`.
struct FailingAllocation {
    std::uint64_t nth = 1;
    bool from_then_on = false;

    template <typename Statement>
    FaultyRun run(Statement&& statement) const {
        FaultyRun result;
        {
            const AllocationFault fault(nth, from_then_on);
            try {
                statement();
                result.completed = true;
            } catch (const std::bad_alloc&) {  // counted below
            }
            result.has_failed = fault.has_failed();
        }
        EXPECT_TRUE(result.completed || result.has_failed) << "a bad_alloc that was not asked for";
        return result;
    }
};

// Takes a step for the first allocation, the second and so on, until it says that none failed; once
// with single faults and once with all later allocations failing too. Fewer than `fewest` faults
// would have tested nothing; at `most` it gives up.
template <typename Step>
void for_each_failing_allocation(std::uint64_t fewest, std::uint64_t most, Step step) {
    for (const bool from_then_on : {false, true}) {
        FailingAllocation failing{.nth = 1, .from_then_on = from_then_on};
        bool has_failed = true;
        for (; has_failed; ++failing.nth) {
            ASSERT_LT(failing.nth, most);
            SCOPED_TRACE(::testing::Message()
                         << "allocation " << failing.nth << (from_then_on ? " and all later" : ""));
            has_failed = step(failing);
        }
        // The last step had no fault, and the loop is one further.
        EXPECT_GE(failing.nth - 2, fewest);
    }
}

}  // namespace brindle::test
