// Systems that keep each point in a field of its own, in seconds: Liquidsoap, and AzuraCast with
// autocue.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include <brindle/tag_facts.h>

#include "bridges/points.h"

namespace brindle::host {

enum class SecondsMeaning {
    CueIn,
    CueOut,
    CueOutFromEitherEnd,  // a negative one counts from the end
    NextStart,
    Overlap,  // from where the next begins to the cue-out
};

struct SecondsField {
    std::u16string_view name;
    SecondsMeaning meaning;
};

[[nodiscard]] std::span<const SecondsField> liquidsoap_fields();
[[nodiscard]] std::span<const SecondsField> azuracast_fields();

// `end`: where the system's time ends.
[[nodiscard]] SystemPoints read_seconds(std::span<const SecondsField> fields, const TagFacts& facts,
                                        std::int64_t end);
// The fields whose values differ.
[[nodiscard]] std::vector<CustomField> seconds_to_write(std::span<const SecondsField> fields,
                                                        const WantedPoints& wanted,
                                                        const TagFacts& facts, std::int64_t end);

}  // namespace brindle::host
