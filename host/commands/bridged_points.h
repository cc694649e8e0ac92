// What bridges to other playout systems need to know of a file.
#pragma once

#include <optional>

#include <brindle/cMPEGHeader.h>
#include <brindle/frame_walk.h>

#include "bridges/bridge.h"
#include "listen/encoder_delay.h"

namespace brindle::host {

// As hosts read them.
[[nodiscard]] HostPoints host_points(const cMPEGHeader& header);

[[nodiscard]] PlayingTime playing_time(const FrameWalk& walk, const EncoderDelay& delay);
// Walks over the file. Nothing without a stream.
[[nodiscard]] std::optional<PlayingTime> playing_time(const cMPEGHeader& header);

}  // namespace brindle::host
