#include "system/posix_calls.h"

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace brindle::host {

std::string system_reason() {
    return std::generic_category().message(errno);
}

bool write_all(int descriptor, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t done = write(descriptor, bytes.data(), bytes.size());
        if (done < 0 && errno == EINTR) {
            continue;
        }
        if (done <= 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(done));
    }
    return true;
}

std::optional<std::string> flush_folder(const std::string& name) {
    const int folder = open(name.empty() ? "." : name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder == -1) {
        // A folder that may be entered but not read.
        return errno == EACCES ? std::nullopt : std::optional(system_reason());
    }
    // Some file systems cannot flush folders.
    const bool is_flushed = fsync(folder) == 0 || errno == EINVAL;
    auto reason = is_flushed ? std::nullopt : std::optional(system_reason());
    close(folder);
    return reason;
}

}  // namespace brindle::host
