// Time as the library needs it; tests advance a clock of their own.
#pragma once

#include <cstdint>

namespace brindle {

struct Date {
    int year;
    int month;  // 1 to 12
    int day;    // 1 to 31
};

class Clock {
public:
    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock() = default;

    // Never runs backwards; only differences have a meaning.
    virtual double seconds() = 0;
    // Milliseconds since the system started; wraps after 49 days.
    virtual std::uint32_t milliseconds_since_start() = 0;
    virtual Date local_date() = 0;
};

}  // namespace brindle
