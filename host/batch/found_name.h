#pragma once

#include <optional>
#include <string>

namespace brindle::host {

// The name of a file as the system has it, or of what could not be looked into, and why.
struct FoundName {
    std::string name;
    std::optional<std::string> failure = std::nullopt;
};

}  // namespace brindle::host
