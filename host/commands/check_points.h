// Points in time that a tag names.
#pragma once

#include <cstdint>
#include <vector>

#include "commands/check_reasons.h"
#include "commands/checked_file.h"

namespace brindle::host {

// `exact`: the milliseconds that the file plays.
void check_points(const cMPEGHeader& header, std::int64_t exact, std::vector<Finding>& findings);

// Brindle's points against those that playout programs keep in seconds. Some of these programs play
// without the encoder's `delay` (ms), and count without it, too.
void check_points_of_others(const CheckedFile& file, std::int64_t delay,
                            std::vector<Finding>& findings);

}  // namespace brindle::host
