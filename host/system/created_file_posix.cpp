#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>

#include <sys/stat.h>

#include "system/created_file.h"

namespace brindle::host {

namespace {

bool write_all(int file, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

// Some folders may be entered but not read, and some file systems cannot flush folders.
void flush_name(const std::string& name) {
    const std::string folder = std::filesystem::path(name).parent_path();
    const int held =
        open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (held != -1) {
        static_cast<void>(fsync(held));
        close(held);
    }
}

}  // namespace

std::optional<std::string> write_new_file(const std::string& name,
                                          std::span<const std::uint8_t> bytes,
                                          const FileState& like) {
    constexpr mode_t kReadAndWrite = 0666;
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                          like.mode & kReadAndWrite);
    if (file == -1) {
        return std::generic_category().message(errno);
    }
    // Without the right to do so it belongs to the caller.
    static_cast<void>(fchown(file, like.owner, like.group) == 0);
    const bool is_written = write_all(file, bytes) && fsync(file) == 0;
    const int error = errno;
    close(file);
    if (!is_written) {
        unlink(name.c_str());
        return std::generic_category().message(error);
    }
    flush_name(name);
    return std::nullopt;
}

}  // namespace brindle::host
