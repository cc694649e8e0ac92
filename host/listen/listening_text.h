// The measurements of a file, for people to read.
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

// A message about frames that can't be decoded, of which there are some; the first is at `time`.
[[nodiscard]] std::string undecoded_text(const UndecodedFrames& frames, const std::string& time);

// Why the file has failed although it was listened to, or nothing.
[[nodiscard]] std::optional<std::string> failure_of(const Listening& heard);

[[nodiscard]] const char* word(Reference reference);
[[nodiscard]] const char* word(EndStyle end);

}  // namespace brindle::host
