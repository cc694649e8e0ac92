// Counts the allocations of this thread, and lets a chosen one fail.
//
// Replaces the global operator new of the whole executable, so it is an object of its own: link
// brindle_test_allocations to use it.
#pragma once

#include <cstdint>

namespace brindle::test {

// What this thread has asked operator new for since it started.
[[nodiscard]] std::uint64_t allocations() noexcept;
[[nodiscard]] std::uint64_t allocated_bytes() noexcept;

// While it lives, the n-th allocation of this thread (from 1 on) raises std::bad_alloc; every
// later one too if `from_then_on`.
class AllocationFault {
public:
    explicit AllocationFault(std::uint64_t nth, bool from_then_on = false) noexcept;
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    // False when the work came to its end with fewer allocations.
    [[nodiscard]] bool has_failed() const noexcept;
};

}  // namespace brindle::test
