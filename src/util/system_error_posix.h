// The system's error codes as the numbers that hosts know.
#pragma once

#include <string>

#include <brindle/error.h>

#include "util/file_action.h"

namespace brindle {

[[nodiscard]] RuntimeError runtime_error(int code, FileAction action) noexcept;

// The same for an action on `name`: what is missing is the file, or already its folder.
[[nodiscard]] RuntimeError runtime_error(int code, FileAction action, const std::string& name);

// The folder part of a name with its "/"; empty when it has none.
[[nodiscard]] std::string folder_of(const std::string& name);

}  // namespace brindle
