// A range of time.
#pragma once

#include <cstdint>

namespace brindle::host {

// In milliseconds from the first sample of the first frame after the encoder's header frame, with
// nothing trimmed, as hosts count.
struct TimeRange {
    std::int64_t begin = 0;
    std::int64_t end = 0;

    friend bool operator==(const TimeRange&, const TimeRange&) = default;
};

}  // namespace brindle::host
