#include "commands/check_sound.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

#include "listen/decode_fault.h"
#include "listen/listening_text.h"
#include "output/printable_text.h"
#include "output/stream_text.h"

namespace brindle::host {

namespace {

using Findings = std::vector<Finding>;

std::int64_t in_milliseconds(double seconds) {
    constexpr double kMillisecondsPerSecond = 1'000;
    return std::llround(seconds * kMillisecondsPerSecond);
}

// `at 0:01.000, 0:02.500, ...`: the first of them.
template <class Places, class Text>
std::string places_text(const Places& places, std::int64_t count, Text text_of) {
    constexpr std::size_t kMost = 5;
    std::string text = "at ";
    const std::size_t shown = std::min(places.size(), kMost);
    for (std::size_t i = 0; i < shown; ++i) {
        text += (i == 0 ? "" : ", ") + text_of(places[i]);
    }
    return text + (count > static_cast<std::int64_t>(shown) ? ", ..." : "");
}

std::string range_text(const TimeRange& range) {
    return time_text(range.begin) + "-" + time_text(range.end);
}

// --- silence

// The part of the file that goes on air: a point of 0 is not set.
struct Played {
    Played(const cMPEGHeader& header, const Listening& heard)
        : begin(std::max(header.CueInmSStart(), 0)),
          end(header.Sectone() > 0 ? header.Sectone() : heard.milliseconds) {}

    std::int64_t begin;  // the cue-in
    std::int64_t end;    // where the next one starts
};

void check_silences(const Listening& heard, const Played& played, std::int64_t longest,
                    Findings& findings) {
    std::vector<TimeRange> silences;
    for (const TimeRange& silence : heard.silences) {
        const std::int64_t end = std::min(silence.end, played.end);
        if (silence.begin > played.begin && end - silence.begin > longest) {
            silences.push_back(silence);
        }
    }
    if (silences.empty()) {
        return;
    }
    // It is unknown whether the silences that were not kept are played.
    const std::int64_t unknown =
        heard.silence_count - static_cast<std::int64_t>(heard.silences.size());
    const auto count = static_cast<std::int64_t>(silences.size()) + unknown;
    findings.push_back({Reason::SilenceInside, counted(count, "silence") + ", " +
                                                   places_text(silences, count, range_text)});
}

// Where the sound after the cue-in begins.
std::int64_t next_sound(const Listening& heard, std::int64_t cue_in) {
    if (cue_in < heard.sound->begin) {
        return heard.sound->begin;
    }
    for (const TimeRange& silence : heard.silences) {
        if (silence.begin <= cue_in && cue_in < silence.end) {
            return silence.end;
        }
    }
    return cue_in;
}

void check_cue_in(const Listening& heard, std::int64_t cue_in, Findings& findings) {
    // A cue-in set by ear is a little before the sound.
    constexpr std::int64_t kUnnoticed = 500;
    const std::string text = "cue-in at " + time_text(cue_in) + ", ";
    if (cue_in >= heard.sound->end) {
        // Beyond the end of the file it has its own code.
        if (cue_in <= heard.milliseconds) {
            findings.push_back({Reason::CueInInSilence,
                                text + "where sound has ended at " + time_text(heard.sound->end),
                                "set --cue-in " + std::to_string(heard.sound->begin)});
        }
        return;
    }
    const std::int64_t next = next_sound(heard, cue_in);
    if (next - cue_in > kUnnoticed) {
        findings.push_back({Reason::CueInInSilence, text + "sound begins at " + time_text(next),
                            "set --cue-in " + std::to_string(next)});
    }
}

void check_silence(const cMPEGHeader& header, const Listening& heard, const SoundLimits& limits,
                   Findings& findings) {
    const Played played(header, heard);
    if (!heard.sound) {
        // Audio that cannot be decoded has no sound either.
        if (heard.undecoded.count == 0 &&
            heard.milliseconds > in_milliseconds(limits.silent_start)) {
            findings.push_back({Reason::SilentStart,
                                "silent from beginning to end, " + time_text(heard.milliseconds),
                                "fetch the file again from its source"});
        }
        return;
    }
    if (played.begin > 0) {
        check_cue_in(heard, played.begin, findings);
    } else if (heard.sound->begin > in_milliseconds(limits.silent_start)) {
        findings.push_back({Reason::SilentStart, "silent until " + time_text(heard.sound->begin),
                            "set --cue-in " + std::to_string(heard.sound->begin)});
    }
    check_silences(heard, played, in_milliseconds(limits.silence_inside), findings);
    if (played.end - heard.sound->end > in_milliseconds(limits.silent_end)) {
        const std::int64_t next = heard.next_start.value_or(heard.sound->end);
        findings.push_back(
            {Reason::SilentEnd,
             "silent from " + time_text(heard.sound->end) + " to " + time_text(played.end),
             "set --sectone " + std::to_string(next)});
    }
}

// --- level

void check_channels(const ChannelBalance& balance, Findings& findings) {
    // Coders leak from one channel into the other; 1,000 is 30 dB.
    constexpr double kSilent = 1'000;
    constexpr double kOutOfPhase = -0.8;
    const auto [left, right] = balance.energy;
    if (left > right * kSilent || right > left * kSilent) {
        findings.push_back(
            {Reason::ChannelMissing,
             std::string("the ") + (left < right ? "left" : "right") + " channel is silent",
             "encode the source again, or the other channel alone"});
    } else if (balance.correlation < kOutOfPhase) {
        findings.push_back({Reason::ChannelMissing,
                            "the channels are out of phase and cancel each other in mono",
                            "invert one of them and encode the source again"});
    }
}

void check_loudness(double loudness, const SoundLimits& limits, Findings& findings) {
    const auto text = [&](const std::string& side, double limit) {
        return lufs_text(loudness) + ", " + side + lufs_text(limit);
    };
    if (loudness > limits.too_loud) {
        findings.push_back({Reason::TooLoud, text("above ", limits.too_loud)});
    } else if (loudness < limits.too_quiet) {
        findings.push_back({Reason::TooQuiet, text("below ", limits.too_quiet)});
    }
}

}  // namespace

ListenOptions listen_options(const SoundLimits& limits) {
    return {.sound_range = limits.sound_range,
            .shortest_silence = in_milliseconds(limits.silence_inside)};
}

void check_sound(const cMPEGHeader& header, const Listening& heard, const SoundLimits& limits,
                 Findings& findings) {
    if (heard.undecoded.count > 0) {
        findings.push_back(
            {Reason::DecodeError,
             undecoded_text(heard.undecoded, time_text(heard.undecoded.milliseconds))});
    }
    check_silence(header, heard, limits, findings);
    if (heard.sound && heard.balance) {
        check_channels(*heard.balance, findings);
    }
    if (heard.clipped_runs > 0) {
        const std::int64_t count = heard.clipped_runs;
        findings.push_back({Reason::Clipped, counted(count, "run") + " of samples at full scale, " +
                                                 places_text(heard.clipped_at, count, time_text)});
    }
    if (heard.loudness) {
        check_loudness(*heard.loudness, limits, findings);
    }
}

}  // namespace brindle::host
