// What is wrong with a file's frames and what surrounds them.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "commands/check_reasons.h"
#include "commands/checked_file.h"

namespace brindle::host {

// Walks over every frame. Returns the milliseconds that the file plays; none where hosts find no
// stream. Raises Error when the file can't be read.
std::optional<std::int64_t> check_audio(CheckedFile& file, std::vector<Finding>& findings);

}  // namespace brindle::host
