// Counts the allocations of this thread and what it holds, and lets a chosen one fail.
//
// Replaces the global operator new of the whole executable, so it is an object of its own: link
// brindle_test_allocations to use it.
#pragma once

#include <cstdint>

namespace brindle::test {

// What this thread has asked operator new for since it started.
[[nodiscard]] std::uint64_t allocations() noexcept;
[[nodiscard]] std::uint64_t allocated_bytes() noexcept;

// The most that this thread holds at any moment from now on, beyond what it holds now: as much as
// the heap really gives for each request. What another thread frees still counts here.
class HeapPeak {
public:
    HeapPeak() noexcept;
    [[nodiscard]] std::uint64_t bytes() const noexcept;

private:
    std::int64_t held_before_;
};

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
