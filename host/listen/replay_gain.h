// The loudness that a file's own tag gives.
#pragma once

#include <optional>
#include <string_view>

#include <brindle/cMPEGHeader.h>

namespace brindle::host {

// LUFS by the field REPLAYGAIN_TRACK_GAIN. Nothing without it, or if it is not a gain.
[[nodiscard]] std::optional<double> loudness_by_replay_gain(const cMPEGHeader& header);

// "-6.50 dB": the number. Nothing if it is not a number, or out of range for programme material.
[[nodiscard]] std::optional<double> gain_in(std::string_view text);

}  // namespace brindle::host
