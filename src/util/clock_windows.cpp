#include "util/clock_windows.h"

#include <windows.h>

namespace brindle {

double WindowsClock::seconds() {
    LARGE_INTEGER ticks{};
    LARGE_INTEGER ticks_per_second{};
    ::QueryPerformanceCounter(&ticks);
    ::QueryPerformanceFrequency(&ticks_per_second);
    return static_cast<double>(ticks.QuadPart) / static_cast<double>(ticks_per_second.QuadPart);
}

std::uint32_t WindowsClock::milliseconds_since_start() {
    return ::GetTickCount();
}

Date WindowsClock::local_date() {
    SYSTEMTIME now{};
    ::GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay};
}

}  // namespace brindle
