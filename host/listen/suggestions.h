// The measurements of a file, as values to set.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "listening.h"

namespace brindle::host {

// The target loudness of ReplayGain 2.0, LUFS.
inline constexpr double kReplayGainReference = -18;

// The columns of a table of edits (`brindle apply`).
inline constexpr const char* kCueInColumn = "cue-in";
inline constexpr const char* kSectoneColumn = "sectone";
inline constexpr const char* kEndStyleColumn = "end-style";
inline constexpr const char* kTrackGainColumn = "field:REPLAYGAIN_TRACK_GAIN";
inline constexpr const char* kTrackPeakColumn = "field:REPLAYGAIN_TRACK_PEAK";

// Each station has its own words for how a file ends; without them nothing is suggested.
struct EndStyleTexts {
    std::string cold;
    std::string fade;

    [[nodiscard]] bool is_empty() const { return cold.empty() && fade.empty(); }
};

// A cell of such a table.
struct Suggestion {
    std::string column;
    std::string text;  // "" for a value that is not known
};

// One for each of the columns above, in this order; that of the end style only with texts. Gain and
// peak are those of the whole file, and not known when only parts were heard.
[[nodiscard]] std::vector<Suggestion> suggestions(const Listening& heard,
                                                  const EndStyleTexts& texts);

}  // namespace brindle::host
