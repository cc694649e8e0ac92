// The measurements of one file.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "decode_fault.h"
#include "encoder_delay.h"
#include "time_range.h"

namespace brindle::host {

// The reference of the thresholds.
enum class Reference {
    Whole,       // the loudness of the whole file
    Partial,     // of what was decoded of it
    ReplayGain,  // what REPLAYGAIN_TRACK_GAIN says
};

enum class EndStyle { Cold, Fade };

// Frames that could not be decoded, and count as silence.
struct UndecodedFrames {
    std::int64_t count = 0;
    // Of the first.
    std::int64_t offset = 0;        // in the file
    std::int64_t milliseconds = 0;  // where it plays
    DecodeFault fault = DecodeFault::Refused;
};

// How the channels of a stereo file relate.
struct ChannelBalance {
    std::array<double, 2> energy{};  // mean squares, not weighted
    double correlation = 0;          // -1 (out of phase) to 1; 0 when one is silent
};

struct Listening {
    // --- what was decoded
    std::int32_t frequency = 0;
    int channels = 0;
    std::int64_t milliseconds = 0;  // of the whole file
    bool is_whole = true;           // or only its first and last minute
    EncoderDelay delay;
    UndecodedFrames undecoded;
    // The first frames of a file that was cut out of another one: their data is not in it.
    std::int64_t frames_cut_off = 0;

    // --- loudness
    Reference reference = Reference::Whole;
    std::optional<double> loudness;   // LUFS
    std::optional<double> range;      // LU
    std::optional<double> true_peak;  // dBTP
    double sample_peak = 0;           // full scale is 1
    std::int64_t clipped_runs = 0;
    std::vector<std::int64_t> clipped_at;  // ms, the first of them
    std::optional<ChannelBalance> balance;

    // --- points; nothing where none was found
    std::optional<TimeRange> sound;
    std::vector<TimeRange> silences;  // inside the sound, the first of them
    std::int64_t silence_count = 0;
    std::optional<std::int64_t> next_start;  // ms
    std::optional<EndStyle> end;
};

struct ListenOptions {
    bool quick = false;
    double sound_range = 40;                // LU below the loudness that are still sound
    double overlap_range = 12;              // LU below the loudness at which the next may begin
    std::int64_t shortest_silence = 2'000;  // ms that a silence inside must exceed
};

}  // namespace brindle::host
