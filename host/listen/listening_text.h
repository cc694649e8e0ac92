// What is heard in a file, for people to read.
#pragma once

#include <optional>
#include <string>

#include "listening.h"

namespace brindle::host {

// A line without the file's name: `-12.2 LUFS, gain -5.8 dB, ...`. Gains bring a file to
// `reference` LUFS.
[[nodiscard]] std::string listening_text(const Listening& heard, double reference);

// Why the file has failed although it was listened to, or nothing.
[[nodiscard]] std::optional<std::string> failure_of(const Listening& heard);

[[nodiscard]] const char* word(Reference reference);
[[nodiscard]] const char* word(EndStyle end);

}  // namespace brindle::host
