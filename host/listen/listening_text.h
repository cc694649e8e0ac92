// What is heard in a file, for people to read.
#pragma once

#include <optional>
#include <string>

#include "listening.h"

namespace brindle::host {

// A line without the file's name: `-12.2 LUFS, gain -5.8 dB, ...`. Gains bring a file to
// `reference` LUFS.
[[nodiscard]] std::string listening_text(const Listening& heard, double reference);

// `-12.2 LUFS`
[[nodiscard]] std::string lufs_text(double loudness);

// What can't be decoded, the first of it at `time`; there are such frames.
[[nodiscard]] std::string undecoded_text(const UndecodedFrames& frames, const std::string& time);

// Why the file has failed although it was listened to, or nothing.
[[nodiscard]] std::optional<std::string> failure_of(const Listening& heard);

[[nodiscard]] const char* word(Reference reference);
[[nodiscard]] const char* word(EndStyle end);

}  // namespace brindle::host
