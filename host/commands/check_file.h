// What is wrong with one file.
#pragma once

#include <vector>

#include "commands/check_reasons.h"
#include "commands/check_sound.h"
#include "system/input_file.h"

namespace brindle::host {

// The audio of an opened file is walked from the first frame to the last, and with `limits` it is
// listened to. Nothing when all is well. Raises Error when the file can't be read.
[[nodiscard]] std::vector<Finding> check_file(InputFile& input, const SoundLimits* limits);

}  // namespace brindle::host
