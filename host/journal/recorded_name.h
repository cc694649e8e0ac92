// The names of files in a journal: absolute, each folder by its own name. The last part may be a
// symbolic link.
#pragma once

#include <optional>
#include <string>

namespace brindle::host {

// Nothing where the folder cannot be found.
[[nodiscard]] std::optional<std::string> recorded_name(const std::string& name);
// Whether a name, from wherever it comes, is of that kind.
[[nodiscard]] bool is_recorded_name(const std::string& name);

}  // namespace brindle::host
