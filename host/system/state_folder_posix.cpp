#include <cstdlib>

#include "system/state_folder.h"

namespace brindle::host {

namespace {

std::optional<std::string> absolute_path_in(const char* variable) {
    const char* const value = std::getenv(variable);
    if (value == nullptr || value[0] != '/') {
        return std::nullopt;
    }
    return std::string(value);
}

}  // namespace

const char* const kStateVariable = "HOME";

std::optional<std::string> state_folder() {
    if (const auto state = absolute_path_in("XDG_STATE_HOME")) {
        return *state + "/brindle";
    }
    if (const auto home = absolute_path_in(kStateVariable)) {
        return *home + "/.local/state/brindle";
    }
    return std::nullopt;
}

}  // namespace brindle::host
