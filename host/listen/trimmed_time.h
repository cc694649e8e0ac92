// Time as a player counts it that leaves out what the encoder has put around the sound.
#pragma once

#include <algorithm>
#include <cstdint>

#include "encoder_delay.h"

namespace brindle::host {

// All in ms. Hosts leave nothing out: their time begins with the first sample of the first frame.
class TrimmedTime {
public:
    TrimmedTime() = default;
    // Of a file that plays `milliseconds` for hosts.
    TrimmedTime(const EncoderDelay& delay, std::int32_t frequency, std::int64_t milliseconds)
        : before_(milliseconds_of(delay.before, frequency)),
          length_(std::max<std::int64_t>(
              milliseconds - milliseconds_of(delay.before + delay.after, frequency), 0)) {}

    // For such a player nothing is before its beginning.
    [[nodiscard]] std::int64_t trimmed(std::int64_t point) const {
        return std::max<std::int64_t>(point - before_, 0);
    }
    [[nodiscard]] std::int64_t untrimmed(std::int64_t point) const { return point + before_; }
    // What such a player plays.
    [[nodiscard]] std::int64_t length() const { return length_; }

private:
    std::int64_t before_ = 0;
    std::int64_t length_ = 0;
};

}  // namespace brindle::host
