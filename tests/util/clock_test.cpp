#include "util/clock.h"

#include <chrono>
#include <ctime>
#include <thread>

#include <gtest/gtest.h>

#include "util/environment.h"

namespace brindle {
namespace {

TEST(Clock, NeverRunsBackwards) {
    Clock& clock = system_environment().clock;
    double last = clock.seconds();
    for (int i = 0; i < 10'000; ++i) {
        const double now = clock.seconds();
        ASSERT_GE(now, last);
        last = now;
    }
}

TEST(Clock, SecondsAndMillisecondsGoOnTogether) {
    Clock& clock = system_environment().clock;
    const double seconds = clock.seconds();
    const std::uint32_t milliseconds = clock.milliseconds_since_start();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const double seconds_passed = clock.seconds() - seconds;
    const std::uint32_t milliseconds_passed = clock.milliseconds_since_start() - milliseconds;
    EXPECT_GE(seconds_passed, 0.035);  // may be told in ticks of the system
    EXPECT_GE(milliseconds_passed, 49U);
    // A busy machine may take a while between the two looks.
    EXPECT_NEAR(seconds_passed, milliseconds_passed / 1000.0, 5.0);
}

TEST(Clock, DateIsTheLocalOne) {
    const std::time_t before = std::time(nullptr);
    const Date date = system_environment().clock.local_date();
    const std::time_t after = std::time(nullptr);
    const auto is_day_of = [&date](std::time_t time) {
        const std::tm local = *std::localtime(&time);  // NOLINT(concurrency-mt-unsafe)
        return date.year == local.tm_year + 1900 && date.month == local.tm_mon + 1 &&
               date.day == local.tm_mday;
    };
    EXPECT_TRUE(is_day_of(before) || is_day_of(after));
}

TEST(Environment, IsOneForAll) {
    EXPECT_EQ(&system_environment(), &system_environment());
    EXPECT_EQ(&system_environment().files, &system_environment().files);
}

}  // namespace
}  // namespace brindle
