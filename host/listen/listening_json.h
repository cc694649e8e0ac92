// What is heard in a file, for programs to read.
#pragma once

#include <optional>
#include <string>

#include "listening.h"

namespace brindle::host {

// One line of JSON. Points are also given under names with "_trimmed_ms": as players count that
// leave the encoder's delay out. Gains bring a file to `reference` LUFS. Numbers that are not known
// are null.
[[nodiscard]] std::string listening_json_line(const std::string& name, const Listening& heard,
                                              double reference,
                                              const std::optional<std::string>& error);

}  // namespace brindle::host
