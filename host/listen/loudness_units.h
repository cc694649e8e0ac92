// Loudness as EBU R 128 has it, from the mean square of all channels and back.
#pragma once

#include <cmath>

namespace brindle::host {

// A tone of 997 Hz at full scale on one channel is to measure -3.01 LUFS.
inline constexpr double kLoudnessOffset = -0.691;

// -infinity for silence.
[[nodiscard]] inline double loudness_of(double energy) {
    return kLoudnessOffset + 10.0 * std::log10(energy);
}

[[nodiscard]] inline double energy_of(double loudness) {
    return std::pow(10.0, (loudness - kLoudnessOffset) / 10.0);
}

}  // namespace brindle::host
