// The system's error codes as the numbers that hosts know.
#pragma once

#include <brindle/error.h>

#include <string>

namespace brindle {

// What was being done when the system refused: a missing right is a different error to a host
// that opens a file and to one that removes it.
enum class FileAction {
    Open,      // or create
    Name,      // remove, rename
    Transfer,  // read, write, measure, flush, close
};

[[nodiscard]] RuntimeError runtime_error(int code, FileAction action) noexcept;

// The same for an action on `name`: what is missing is the file, or already its folder.
[[nodiscard]] RuntimeError runtime_error(int code, FileAction action, const std::string& name);

// The folder part of a name with its "/"; empty when it has none.
[[nodiscard]] std::string folder_of(const std::string& name);

}  // namespace brindle
