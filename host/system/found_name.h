#pragma once

#include <optional>
#include <string>

#include "system/file_access.h"

namespace brindle::host {

// The name of a file as the system has it, or of a folder that could not be read, and why.
struct FoundName {
    std::string name;
    std::optional<std::string> failure = std::nullopt;
    // Where the system was asked before, so that it need not be asked again.
    std::optional<FileStatus> status = std::nullopt;
};

}  // namespace brindle::host
