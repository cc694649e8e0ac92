#include "listening_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace brindle::host {

namespace {

// One decimal place. Independent of the locale.
std::string tenths(double value) {
    constexpr double kTen = 10;
    std::array<char, 32> digits{};
    const double rounded = std::round(value * kTen) / kTen + 0.0;
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), rounded,
                                            std::chars_format::fixed, 1);
    return {digits.data(), end};
}

std::string with_sign(double value) {
    const std::string text = tenths(value);
    return text.front() == '-' ? text : "+" + text;
}

std::string range_text(const TimeRange& range) {
    return std::to_string(range.begin) + "-" + std::to_string(range.end) + " ms";
}

std::string loudness_text(const Listening& heard, double reference) {
    if (!heard.loudness) {
        return "no loudness";
    }
    std::string text = lufs_text(*heard.loudness);
    if (heard.reference != Reference::Whole) {
        text += std::string(" (") + word(heard.reference) + ")";
    }
    return text + ", gain " + with_sign(reference - *heard.loudness) + " dB";
}

std::string silences_text(const Listening& heard) {
    std::string text = ", " + std::to_string(heard.silence_count) +
                       (heard.silence_count == 1 ? " silence inside" : " silences inside");
    const char* separator = " (";
    for (const TimeRange& silence : heard.silences) {
        text += separator + range_text(silence);
        separator = ", ";
    }
    return text + (heard.silence_count > static_cast<std::int64_t>(heard.silences.size()) ? ", ...)"
                                                                                          : ")");
}

}  // namespace

std::string lufs_text(double loudness) {
    return tenths(loudness) + " LUFS";
}

const char* word(Reference reference) {
    switch (reference) {
        case Reference::Partial:
            return "partial";
        case Reference::ReplayGain:
            return "replaygain";
        case Reference::Whole:
            break;
    }
    return "whole";
}

const char* word(EndStyle end) {
    return end == EndStyle::Fade ? "fade" : "cold";
}

std::string listening_text(const Listening& heard, double reference) {
    std::string text = loudness_text(heard, reference);
    if (heard.range) {
        text += ", range " + tenths(*heard.range) + " LU";
    }
    if (heard.true_peak) {
        text += ", peak " + with_sign(*heard.true_peak) + " dBTP";
    }
    text += heard.sound ? ", sound " + range_text(*heard.sound) : ", no sound";
    if (heard.next_start) {
        text += ", next at " + std::to_string(*heard.next_start) + " ms";
    }
    if (heard.end) {
        text += std::string(", ") + word(*heard.end);
    }
    if (heard.silence_count > 0) {
        text += silences_text(heard);
    }
    if (heard.clipped_runs > 0) {
        text += ", clipped " + std::to_string(heard.clipped_runs) +
                (heard.clipped_runs == 1 ? " time" : " times");
    }
    return text;
}

std::string undecoded_text(const UndecodedFrames& frames, const std::string& time) {
    return std::to_string(frames.count) +
           (frames.count == 1 ? " frame can't be decoded" : " frames can't be decoded, the first") +
           " at byte " + std::to_string(frames.offset) + " (" + time +
           "): " + reason_of(frames.fault);
}

std::optional<std::string> failure_of(const Listening& heard) {
    if (heard.undecoded.count == 0) {
        return std::nullopt;
    }
    return undecoded_text(heard.undecoded, std::to_string(heard.undecoded.milliseconds) + " ms");
}

}  // namespace brindle::host
