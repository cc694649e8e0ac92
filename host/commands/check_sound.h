// What is wrong with the sound of a file.
#pragma once

#include <vector>

#include <brindle/cMPEGHeader.h>

#include "commands/check_reasons.h"
#include "listen/listening.h"

namespace brindle::host {

// Limits within which there is no warning or note.
struct SoundLimits {
    // Seconds without sound.
    double silence_inside = 2;
    double silent_start = 2;
    double silent_end = 2;
    // LUFS
    double too_loud = -7;
    double too_quiet = -30;
    double sound_range = 40;  // LU below the loudness that are still sound
};

// How a file is to be listened to.
[[nodiscard]] ListenOptions listen_options(const SoundLimits& limits);

// `header` has the file open from which this was heard. Silence that the cue-in or the secondary
// tone skip is not on air.
void check_sound(const cMPEGHeader& header, const Listening& heard, const SoundLimits& limits,
                 std::vector<Finding>& findings);

}  // namespace brindle::host
