// The samples that an encoder adds around the sound, by its header in the first frame.
#pragma once

#include <cmath>
#include <cstdint>
#include <span>

namespace brindle::host {

struct EncoderDelay {
    // Samples, the decoder's own delay included. A player that trims removes them; 0 if the file
    // does not give them, so no player trims.
    std::int64_t before = 0;
    std::int64_t after = 0;

    friend bool operator==(const EncoderDelay&, const EncoderDelay&) = default;
};

// `frame` is the first of a Layer III stream, and holds a header ("Xing" or "Info"), in which
// LAME and compatible encoders store both.
[[nodiscard]] EncoderDelay read_encoder_delay(std::span<const std::uint8_t> frame);

// To the nearest whole number.
[[nodiscard]] inline std::int64_t milliseconds_of(std::int64_t samples, std::int32_t frequency) {
    constexpr double kMillisecondsPerSecond = 1'000;
    return std::llround(static_cast<double>(samples) * kMillisecondsPerSecond / frequency);
}

}  // namespace brindle::host
