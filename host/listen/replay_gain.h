// What a file's own tag says of its loudness.
#pragma once

#include <optional>
#include <string_view>

#include <brindle/cMPEGHeader.h>

namespace brindle::host {

// LUFS by the field REPLAYGAIN_TRACK_GAIN. Nothing without it, or when it is no gain.
[[nodiscard]] std::optional<double> loudness_by_replay_gain(const cMPEGHeader& header);

// "-6.50 dB": the number. Nothing when it is none, or none that a programme can need.
[[nodiscard]] std::optional<double> gain_in(std::string_view text);

}  // namespace brindle::host
