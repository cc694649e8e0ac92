#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

#include <sys/stat.h>

#include "system/created_file.h"
#include "system/posix_calls.h"

namespace brindle::host {

std::optional<std::string> write_new_file(const std::string& name,
                                          std::span<const std::uint8_t> bytes,
                                          const FileState& like) {
    constexpr mode_t kReadAndWrite = 0666;
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                          like.mode & kReadAndWrite);
    if (file == -1) {
        return system_reason();
    }
    // Without the right to do so it belongs to the caller.
    static_cast<void>(fchown(file, like.owner, like.group) == 0);
    std::optional<std::string> reason;
    if (!write_all(file, bytes) || fsync(file) != 0) {
        reason = system_reason();
    }
    close(file);
    if (!reason) {
        reason = flush_folder(std::filesystem::path(name).parent_path());
    }
    if (reason) {
        unlink(name.c_str());
    }
    return reason;
}

std::optional<std::string> remove_file(const std::string& name) {
    if (unlink(name.c_str()) != 0) {
        return system_reason();
    }
    return flush_folder(std::filesystem::path(name).parent_path());
}

}  // namespace brindle::host
