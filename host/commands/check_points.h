// Points in time that a tag names.
#pragma once

#include <cstdint>
#include <vector>

#include "bridges/bridge.h"
#include "commands/check_reasons.h"
#include "commands/checked_file.h"

namespace brindle::host {

// `exact`: the milliseconds that the file plays.
void check_points(const cMPEGHeader& header, std::int64_t exact, std::vector<Finding>& findings);

// Brindle's points against those that other playout systems keep in the same tag.
void check_points_of_others(const CheckedFile& file, const PlayingTime& time,
                            std::vector<Finding>& findings);

}  // namespace brindle::host
