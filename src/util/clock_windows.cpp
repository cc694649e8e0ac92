#include "util/clock_windows.h"

// The second needs the first.
// clang-format off
#include <windows.h>
#include <mmsystem.h>
// clang-format on

namespace brindle {

double WindowsClock::seconds() {
    LARGE_INTEGER ticks{};
    LARGE_INTEGER ticks_per_second{};
    ::QueryPerformanceCounter(&ticks);
    ::QueryPerformanceFrequency(&ticks_per_second);
    return static_cast<double>(ticks.QuadPart) / static_cast<double>(ticks_per_second.QuadPart);
}

std::uint32_t WindowsClock::milliseconds_since_start() {
    return ::timeGetTime();
}

Date WindowsClock::local_date() {
    SYSTEMTIME now{};
    ::GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay};
}

}  // namespace brindle
