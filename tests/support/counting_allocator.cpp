#include "support/counting_allocator.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <malloc.h>
#include <new>

// What lies below operator new is malloc.
// NOLINTBEGIN(cppcoreguidelines-no-malloc)

namespace brindle::test {
namespace {

struct State {
    std::uint64_t count;
    std::uint64_t bytes;
    std::int64_t held;
    std::int64_t most_held;
    std::uint64_t until_fault;  // 0: no fault planned
    bool from_then_on;
    bool has_failed;
};

thread_local State state{};

bool fails() noexcept {
    if (state.until_fault == 0) {
        return false;
    }
    if (state.until_fault > 1) {
        --state.until_fault;
        return false;
    }
    if (state.has_failed && !state.from_then_on) {
        return false;
    }
    state.has_failed = true;
    return true;
}

std::int64_t size_in_heap(void* memory) noexcept {
#ifdef _WIN32
    return static_cast<std::int64_t>(_msize(memory));
#else
    return static_cast<std::int64_t>(malloc_usable_size(memory));
#endif
}

void* get(std::size_t size, std::size_t alignment) noexcept {
    if (alignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__) {
        return std::malloc(size);
    }
    return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

void give_back(void* memory) noexcept {
    if (memory != nullptr) {
        state.held -= size_in_heap(memory);
        std::free(memory);
    }
}

void* allocate(std::size_t size, std::size_t alignment) noexcept {
    ++state.count;
    state.bytes += size;
    if (fails()) {
        return nullptr;
    }
    void* const memory = get(std::max<std::size_t>(size, 1), alignment);
    if (memory != nullptr) {
        state.held += size_in_heap(memory);
        state.most_held = std::max(state.most_held, state.held);
    }
    return memory;
}

void* allocate_or_raise(std::size_t size, std::size_t alignment) {
    void* memory = allocate(size, alignment);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

std::uint64_t allocations() noexcept {
    return state.count;
}

std::uint64_t allocated_bytes() noexcept {
    return state.bytes;
}

HeapPeak::HeapPeak() noexcept : held_before_(state.held) {
    state.most_held = state.held;
}

std::uint64_t HeapPeak::bytes() const noexcept {
    return static_cast<std::uint64_t>(state.most_held - held_before_);
}

AllocationFault::AllocationFault(std::uint64_t nth, bool from_then_on) noexcept {
    state.until_fault = nth;
    state.from_then_on = from_then_on;
    state.has_failed = false;
}

AllocationFault::~AllocationFault() {
    state.until_fault = 0;
}

bool AllocationFault::has_failed() const noexcept {
    return state.has_failed;
}

}  // namespace brindle::test

using brindle::test::allocate;
using brindle::test::allocate_or_raise;
using brindle::test::give_back;

void* operator new(std::size_t size) {
    return allocate_or_raise(size, 0);
}
void* operator new[](std::size_t size) {
    return allocate_or_raise(size, 0);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, 0);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, 0);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocate_or_raise(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return allocate_or_raise(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    give_back(memory);
}
void operator delete[](void* memory) noexcept {
    give_back(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    give_back(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    give_back(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    give_back(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    give_back(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    give_back(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    give_back(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    give_back(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    give_back(memory);
}

// NOLINTEND(cppcoreguidelines-no-malloc)
