#pragma once

#include <optional>
#include <string>

#include "commands/set_options.h"

namespace brindle::host {

// Sets and saves one file as hosts do it with SaveAllInfo. The answer is why it failed, or nothing.
[[nodiscard]] std::optional<std::string> set_in_host_form(const std::string& name,
                                                          const SetOptions& options);

}  // namespace brindle::host
