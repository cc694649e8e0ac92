// When a file was changed last.
#pragma once

#include <optional>
#include <string>

namespace brindle::host {

// `2026-11-22T05:09:54Z`, by ISO 8601; nothing when the system does not tell.
[[nodiscard]] std::optional<std::string> modification_time(const std::string& name);

}  // namespace brindle::host
