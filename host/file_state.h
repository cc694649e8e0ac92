// What the system keeps about a file besides its bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <sys/stat.h>

namespace brindle::host {

struct FileState {
    struct stat status;

    // A file that was rebuilt once is another one under the same name.
    [[nodiscard]] bool is_same_file(const FileState& other) const;
    [[nodiscard]] std::int64_t size() const { return status.st_size; }
};

// Nothing when the system does not tell.
[[nodiscard]] std::optional<FileState> state_of(const std::string& name);

// Gives a saved file its modification time back and, where it was rebuilt, its mode and (for root)
// its owner. The answer is why that could not be done, or nothing.
[[nodiscard]] std::optional<std::string> restore_state(const std::string& name,
                                                       const FileState& before);

}  // namespace brindle::host
