// What the system writes beside a file whenever its content changes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace brindle::host {

struct FileIdentity {
    std::uint64_t volume = 0;
    std::uint64_t number = 0;
    std::int64_t size = 0;
    // Seconds and nanoseconds. The product of both overflows for times that a file can claim.
    std::int64_t modified = 0;
    std::int64_t modified_nanoseconds = 0;
    std::int64_t changed = 0;  // of the status: no program can set it
    std::int64_t changed_nanoseconds = 0;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

// Follows links. Nothing when the name is not that of a regular file.
[[nodiscard]] std::optional<FileIdentity> identity_of(const std::string& name);

}  // namespace brindle::host
