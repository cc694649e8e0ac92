#include "system/processor_time.h"

#include <chrono>
#include <thread>

#include <gtest/gtest.h>

namespace brindle::host {
namespace {

void work() {
    volatile unsigned sum = 0;
    for (unsigned number = 0; number < 20'000'000; ++number) {
        sum = sum + number;
    }
}

TEST(ProcessorTime, CountsTheWorkOfAllThreads) {
    const auto begin = processor_time();
    work();
    const auto of_one = processor_time() - begin;
    EXPECT_GT(of_one, std::chrono::nanoseconds(0));
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    // Threads that share a processor may be quicker or slower than one alone.
    EXPECT_GT(processor_time() - begin, of_one + of_one / 2);
}

TEST(ProcessorTime, DoesNotCountWaiting) {
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    const auto used_before = processor_time();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_LT(processor_time() - used_before, (Clock::now() - begin) / 2);
}

}  // namespace
}  // namespace brindle::host
