#include "util/clock_posix.h"

#include <ctime>

namespace brindle {
namespace {

timespec steady_time() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

}  // namespace

double PosixClock::seconds() {
    constexpr double kNanosecondsPerSecond = 1e9;
    const timespec now = steady_time();
    return static_cast<double>(now.tv_sec) +
           static_cast<double>(now.tv_nsec) / kNanosecondsPerSecond;
}

std::uint32_t PosixClock::milliseconds_since_start() {
    const timespec now = steady_time();
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
