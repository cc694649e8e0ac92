// What is heard in a file, for programs to read.
#pragma once

#include "listening.h"
#include "output/json_values.h"

namespace brindle::host {

// Points also under names with "_trimmed_ms": as players count that leave the encoder's delay out.
// Gains bring a file to `reference` LUFS. Numbers that are not known are null.
[[nodiscard]] Json listening_facts(const Listening& heard, double reference);

}  // namespace brindle::host
