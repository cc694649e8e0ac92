// The measurements of a file, for programs to read.
#pragma once

#include <optional>
#include <string>

#include "listening.h"
#include "output/json_values.h"

namespace brindle::host {

// The keys and values of such a line.
[[nodiscard]] Json listening_facts(const Listening& heard, double reference);

// One line of JSON. Points are also given under names with "_trimmed_ms": as counted by players
// that remove the encoder delay. Gains bring a file to `reference` LUFS. Unknown numbers are
// null.
[[nodiscard]] std::string listening_json_line(const std::string& name, const Listening& heard,
                                              double reference,
                                              const std::optional<std::string>& error);

}  // namespace brindle::host
