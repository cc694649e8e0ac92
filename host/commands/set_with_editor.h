#pragma once

#include <optional>
#include <string>

#include "commands/set_options.h"

namespace brindle::host {

// Sets values of one file and leaves all other frames as they stand. The answer is why it failed,
// or nothing.
[[nodiscard]] std::optional<std::string> set_with_editor(const std::string& name,
                                                         const SetOptions& options);

}  // namespace brindle::host
