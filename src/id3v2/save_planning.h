// What a save or a strip would do to a file, worked out without writing.
#pragma once

#include <cstdint>

#include <brindle/save_plan.h>

#include "id3v2/file_reading.h"

namespace brindle {

// What a save would need and lose. Raises what it would raise before it writes.
[[nodiscard]] SavePlan plan_save(const FileReading& reading);
// The same for a strip of these tags.
[[nodiscard]] StripPlan plan_strip(const FileReading& reading, std::int32_t tags);

}  // namespace brindle
