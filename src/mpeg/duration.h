// How long a stream plays.
#pragma once

#include <cstdint>

#include <brindle/values.h>

#include "mpeg/stream_state.h"

namespace brindle {

// Of each channel. Version and layer as in a frame header's record.
[[nodiscard]] std::int32_t samples_per_frame(std::int16_t version, std::int16_t layer);

// Sets the duration, and the average bit rate that a host reads for a variable one. Error 6 or 11
// when a number leaves 32 bits or there is no frame to divide by; what was set before stays.
void CalcDuration(StreamState& state, std::int32_t AudioBytes);

// Minutes and seconds, as in 1:16. `Secs` is rounded to a whole number, halves to even.
[[nodiscard]] String SecsToTimeString(double& Secs);

}  // namespace brindle
