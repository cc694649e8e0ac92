// What the system keeps about a file besides its bytes.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace brindle::host {

struct FileState {
    // Which file it is: one that was rebuilt is another one under the same name.
    std::uint64_t volume = 0;
    std::uint64_t number = 0;
    std::int64_t size = 0;
    std::int64_t modified = 0;  // in the system's own unit
    std::int64_t accessed = 0;  // in the same
    std::int64_t created = 0;   // in the same; 0 where no program can set it
    // Where the system has them.
    std::uint32_t mode = 0;  // Windows: the attributes
    std::uint32_t owner = 0;
    std::uint32_t group = 0;
    std::uint64_t links = 1;                             // names of the file
    std::map<std::string, std::string> user_attributes;  // those of "user.", by name

    [[nodiscard]] bool is_same_file(const FileState& other) const {
        return volume == other.volume && number == other.number;
    }
    // As far as that can be told without reading it.
    [[nodiscard]] bool has_same_content(const FileState& other) const {
        return is_same_file(other) && size == other.size && modified == other.modified;
    }
};

// Nothing if the system does not provide it.
[[nodiscard]] std::optional<FileState> state_of(const std::string& name);

// Raises error 70 if the file has changed, as far as the system reports it.
void require_same_content(const std::string& name, const FileState& before);

// Gives a saved file its modification time back. The answer is why that could not be done, or
// nothing.
[[nodiscard]] std::optional<std::string> restore_modification_time(const std::string& name,
                                                                   const FileState& before);

// Gives a file back the times, the access rights and the user attributes that it had. Attributes
// that it has got since stay, and so do its set-id bits. The answer is why that could not be done,
// or nothing.
[[nodiscard]] std::optional<std::string> restore_state(const std::string& name,
                                                       const FileState& before);

}  // namespace brindle::host
