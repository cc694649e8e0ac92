// Where the program keeps the data that it makes for the user.
#pragma once

#include <optional>
#include <string>

namespace brindle::host {

// ${XDG_STATE_HOME:-~/.local/state}/brindle, on Windows %LOCALAPPDATA%\brindle. Nothing where no
// variable names an absolute path.
[[nodiscard]] std::optional<std::string> state_folder();

// The variable that has to be set for it.
extern const char* const kStateVariable;

}  // namespace brindle::host
