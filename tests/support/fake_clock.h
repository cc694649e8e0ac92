#pragma once

#include <cstdint>

#include "util/clock.h"

namespace brindle::test {

// A clock that advances only when the test says so, or by one step each time it is read.
class FakeClock : public Clock {
public:
    double seconds() override {
        ++looks;
        now += step;
        return now;
    }
    std::uint32_t milliseconds_since_start() override {
        const std::uint32_t shown = milliseconds;
        milliseconds += milliseconds_step;
        return shown;
    }
    Date local_date() override { return date; }

    double now = 1000.0;
    double step = 0.0;
    std::uint64_t looks = 0;  // how often seconds() was asked for
    std::uint32_t milliseconds = 83421593;
    std::uint32_t milliseconds_step = 0;
    Date date{2026, 11, 16};
};

}  // namespace brindle::test
