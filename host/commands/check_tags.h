// What is wrong with a file's tags.
#pragma once

#include <cstdint>
#include <vector>

#include "commands/check_reasons.h"
#include "commands/checked_file.h"

namespace brindle::host {

inline constexpr std::int64_t kId3v1Bytes = 128;

// Also tells where the tags at the end of the file begin.
std::int64_t check_tags_at_end(CheckedFile& file, std::vector<Finding>& findings);

void check_tags(CheckedFile& file, std::vector<Finding>& findings);

}  // namespace brindle::host
