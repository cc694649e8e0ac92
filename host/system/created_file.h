// Files that this program makes beside those of the user.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "system/file_state.h"

namespace brindle::host {

// Makes the file, and waits until the device has it. What has the name already is left alone, be it
// a symbolic link. Others get no more rights than in a file of the state `like`. The answer is why
// there is no such file, or nothing.
[[nodiscard]] std::optional<std::string> write_new_file(const std::string& name,
                                                        std::span<const std::uint8_t> bytes,
                                                        const FileState& like);

// Removes the name, and waits until the device knows. The answer is why it is still there, or
// nothing.
[[nodiscard]] std::optional<std::string> remove_file(const std::string& name);

}  // namespace brindle::host
