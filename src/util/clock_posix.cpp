#include "util/clock_posix.h"

#include <ctime>

namespace brindle {
namespace {

// The time of the last tick, some milliseconds ago, costs a fraction of the exact one.
#ifdef CLOCK_MONOTONIC_COARSE
constexpr clockid_t kTickClock = CLOCK_MONOTONIC_COARSE;
#else
constexpr clockid_t kTickClock = CLOCK_MONOTONIC;
#endif

timespec time_of(clockid_t clock) {
    timespec now{};
    ::clock_gettime(clock, &now);
    return now;
}

}  // namespace

double PosixClock::seconds() {
    // Callers need to know whether a large part of a second has passed.
    constexpr double kNanosecondsPerSecond = 1e9;
    const timespec now = time_of(kTickClock);
    return static_cast<double>(now.tv_sec) +
           static_cast<double>(now.tv_nsec) / kNanosecondsPerSecond;
}

std::uint32_t PosixClock::milliseconds_since_start() {
    const timespec now = time_of(CLOCK_MONOTONIC);
    const auto seconds = static_cast<std::uint64_t>(now.tv_sec);
    const auto nanoseconds = static_cast<std::uint64_t>(now.tv_nsec);
    return static_cast<std::uint32_t>(seconds * 1'000 + nanoseconds / 1'000'000);
}

Date PosixClock::local_date() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday};
}

}  // namespace brindle
