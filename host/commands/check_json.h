// What was found in a file, as `check --json` prints it.
#pragma once

#include <vector>

#include "commands/check_reasons.h"
#include "output/json_values.h"

namespace brindle::host {

// "verdict" and "reasons".
[[nodiscard]] Json findings_json(const std::vector<Finding>& findings);

}  // namespace brindle::host
