// Names of files that are not complete.
#pragma once

#include <array>
#include <cstdint>
#include <random>
#include <string>

#include "system/file_path.h"
#include "system/hexadecimal.h"

namespace brindle::host {

// A new name in the folder of the file, by which `check` recognises what a killed run has left.
[[nodiscard]] inline std::string temporary_name_beside(const std::string& name) {
    std::array<std::uint8_t, 8> bytes{};
    std::random_device random;
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    return name_of(path_of(name).parent_path() / (".brindle-" + hexadecimal(bytes)));
}

}  // namespace brindle::host
