// Names under which files are found again later: absolute, and in one form only. On Windows they
// have "/" between their parts, and each part as the folder lists it.
#pragma once

#include <optional>
#include <string>
#include <system_error>

namespace brindle::host {

// Without links: the name of the file that the name leads to.
[[nodiscard]] std::string real_name(const std::string& name, std::error_code& error);

// The folder without links; the last part may be one. Nothing where the folder cannot be found.
[[nodiscard]] std::optional<std::string> recorded_name(const std::string& name);
// Whether a name, from wherever it comes, is of that kind.
[[nodiscard]] bool is_recorded_name(const std::string& name);

}  // namespace brindle::host
