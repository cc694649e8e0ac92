#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <sys/file.h>
#include <sys/stat.h>

#include "system/posix_calls.h"
#include "system/private_file.h"

namespace brindle::host {

namespace {

constexpr mode_t kOwnerReadsAndWrites = S_IRUSR | S_IWUSR;
constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;

// One type for what all systems open.
int descriptor(std::intptr_t held) {
    return static_cast<int>(held);
}

// Why others may have written the file, or nothing.
std::optional<std::string> reason_against_trusting(const struct stat& status) {
    if (!S_ISREG(status.st_mode)) {
        return "Not a regular file";
    }
    if (status.st_uid != geteuid()) {
        return "It belongs to another user";
    }
    if ((status.st_mode & kOthersWrite) != 0) {
        return "Others can write to it";
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> PrivateFile::create(const std::string& name) {
    close();
    held_ = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                   kOwnerReadsAndWrites);
    if (held_ == kNone) {
        return system_reason();
    }
    // Some file systems have no locks. Then a journal that is being written is taken for an old
    // one, and stays because it is new.
    static_cast<void>(flock(descriptor(held_), LOCK_EX | LOCK_NB));
    size_ = 0;
    return std::nullopt;
}

std::optional<std::string> PrivateFile::open(const std::string& name) {
    close();
    const int file =
        ::open(name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file == kNone) {
        return errno == ELOOP ? "It is a symbolic link" : system_reason();
    }
    struct stat status {};
    std::optional<std::string> reason;
    if (fstat(file, &status) != 0) {
        reason = system_reason();
    } else {
        reason = reason_against_trusting(status);
    }
    if (reason) {
        ::close(file);
        return reason;
    }
    held_ = file;
    is_being_written_ = flock(file, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    size_ = status.st_size;
    modified_ = status.st_mtim.tv_sec;
    return std::nullopt;
}

void PrivateFile::close() {
    if (is_open()) {
        ::close(descriptor(std::exchange(held_, kNone)));
    }
}

std::optional<std::string> PrivateFile::append(std::span<const std::uint8_t> bytes) const {
    return write_all(descriptor(held_), bytes) ? std::nullopt : std::optional(system_reason());
}

std::optional<std::string> PrivateFile::flush() const {
    return fdatasync(descriptor(held_)) == 0 ? std::nullopt : std::optional(system_reason());
}

std::vector<std::uint8_t> PrivateFile::read(std::int64_t offset, std::size_t count) const {
    std::vector<std::uint8_t> bytes(count);
    std::size_t filled = 0;
    while (filled < count) {
        const ssize_t done = pread(descriptor(held_), bytes.data() + filled, count - filled,
                                   offset + static_cast<std::int64_t>(filled));
        if (done < 0 && errno == EINTR) {
            continue;
        }
        if (done <= 0) {
            break;
        }
        filled += static_cast<std::size_t>(done);
    }
    bytes.resize(filled);
    return bytes;
}

bool PrivateFile::is_in_use() const {
    return flock(descriptor(held_), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

std::optional<std::string> flush_name(const std::string& name) {
    return flush_folder(std::filesystem::path(name).parent_path());
}

std::optional<std::string> make_private_folder(const std::string& name) {
    std::error_code error;
    if (std::filesystem::is_directory(name, error)) {
        return std::nullopt;
    }
    const std::string above = std::filesystem::path(name).parent_path();
    if (!above.empty() && above != name) {
        if (auto reason = make_private_folder(above)) {
            return reason;
        }
    }
    if (mkdir(name.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        return system_reason();
    }
    return above.empty() ? std::nullopt : flush_folder(above);
}

}  // namespace brindle::host
