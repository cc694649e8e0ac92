// The points in time of a file that other playout systems know, too.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <brindle/values.h>

namespace brindle::host {

// As Brindle's fields have them: ms as hosts count; 0 for none.
struct HostPoints {
    std::int64_t cue_in = 0;
    std::int64_t intro = 0;
    std::int64_t sectone = 0;
};

// A point of another system: ms as that system counts.
struct FieldPoint {
    std::string field;  // where it was read
    std::int64_t at = 0;
};

// As another system's fields have them.
struct SystemPoints {
    std::optional<FieldPoint> cue_in;
    std::optional<FieldPoint> cue_out;     // where playing ends
    std::optional<FieldPoint> next_start;  // where the next begins
    std::optional<FieldPoint> talk_end;    // until there somebody may talk
    // Why fields were left out.
    std::vector<std::string> errors;
};

// What a system is to find in a file.
struct WantedPoints {
    std::int64_t cue_in = 0;
    std::int64_t cue_out = 0;
    std::optional<std::int64_t> next_start;
    std::optional<std::int64_t> talk_end;
};

// A user-defined text to write.
struct CustomField {
    String name;
    String text;
};

// Points of fields with two decimals may be so far from the same point in ms.
inline constexpr std::int64_t kRoundingOfPoints = 10;

}  // namespace brindle::host
