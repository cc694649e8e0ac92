// From Brindle's scheduling fields to those of another playout system, and back.
//
//     Brindle         Liquidsoap                           AzuraCast             Rivendell (rdxl)
//     Cue In          liq_cue_in                           cue_in                startPoint
//     Sec Tone        liq_cue_out less liq_cross_duration  cross_start_next,     segueStartPoint
//                                                          liq_cross_start_next
//     Intro           -                                    -                     talkEndPoint
//     (end of audio)  liq_cue_out                          cue_out               endPoint
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <brindle/tag_facts.h>

#include "bridges/bridge_error.h"
#include "bridges/points.h"
#include "listen/trimmed_time.h"

namespace brindle::host {

enum class PlayoutSystem { Liquidsoap, AzuraCast, Rivendell };

// As they are named on the command line.
[[nodiscard]] std::vector<std::string> playout_system_words();
[[nodiscard]] PlayoutSystem playout_system_of(const std::string& word);
[[nodiscard]] std::string word_of(PlayoutSystem system);

// Why this build has no bridge to the system, or nothing.
[[nodiscard]] std::optional<std::string> reason_against(PlayoutSystem system);

// The duration of a file.
struct PlayingTime {
    std::int64_t length = 0;  // ms, for hosts
    TrimmedTime trimmed;
};

// The fields to write, so that the system plays the file as hosts do. Fields that already have
// these values are omitted, and points that are not set in Brindle: those of the system stay.
// Raises BridgeError.
[[nodiscard]] std::vector<CustomField> exported(PlayoutSystem system, const HostPoints& points,
                                                const TagFacts& facts, const PlayingTime& playing);

// Whether there is any field in which the system keeps a point.
[[nodiscard]] bool has_fields_of(PlayoutSystem system, const TagFacts& facts);

// The points in the system's fields. Raises BridgeError if one is impossible.
[[nodiscard]] HostPoints imported(PlayoutSystem system, const TagFacts& facts,
                                  const PlayingTime& playing);

// A field of one of these systems with the same meaning as a field of Brindle.
struct SharedPoint {
    std::string_view brindle_name;  // "cue-in"
    std::string system_name;        // "liq_cue_in"
    std::int64_t ours = 0;
    std::int64_t theirs = 0;
};

// Those that both have, and that differ by more than rounding, whether the system leaves out the
// encoder's delay or not.
[[nodiscard]] std::vector<SharedPoint> disagreements(const HostPoints& points,
                                                     const TagFacts& facts,
                                                     const PlayingTime& playing);

}  // namespace brindle::host
