// What is wrong with one file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>

#include "commands/check_reasons.h"
#include "commands/check_sound.h"

namespace brindle::host {

// The file has been opened in `header`; its audio is walked from the first frame to the last, and
// with `limits` it is listened to. Nothing when all is well. Raises Error when the file can't be
// read.
[[nodiscard]] std::vector<Finding> check_file(const cMPEGHeader& header, const std::string& name,
                                              std::int64_t size, const SoundLimits* limits);

}  // namespace brindle::host
