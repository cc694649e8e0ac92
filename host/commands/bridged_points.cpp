#include "commands/bridged_points.h"

namespace brindle::host {

HostPoints host_points(const cMPEGHeader& header) {
    return {header.CueInmSStart(), header.Intro(), header.Sectone()};
}

PlayingTime playing_time(const FrameWalk& walk, const EncoderDelay& delay) {
    return {walk.milliseconds, TrimmedTime(delay, walk.frequency, walk.milliseconds)};
}

std::optional<PlayingTime> playing_time(const cMPEGHeader& header) {
    EncoderDelay delay;
    const FrameWalk walk = walk_frames(header, [&](const WalkedFrame& frame) {
        if (frame.is_header_frame) {
            delay = read_encoder_delay(frame.bytes);
        }
    });
    return walk.frequency == 0 ? std::nullopt : std::optional(playing_time(walk, delay));
}

}  // namespace brindle::host
