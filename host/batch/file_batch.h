// One file after the other.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "system/exit_status.h"

namespace brindle::host {

// What is done to each file; the answer is why it failed, or nothing.
using FileStep = std::function<std::optional<std::string>(const std::string& name)>;

// A file that fails does not stop the others. SIGINT does: the file at hand is finished, the rest
// is not touched, and the number of files done is printed.
[[nodiscard]] ExitStatus for_each_file(const std::vector<std::string>& names, const FileStep& step);

}  // namespace brindle::host
