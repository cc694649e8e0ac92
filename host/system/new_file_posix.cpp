#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <sys/stat.h>

#include "system/file_access.h"
#include "system/new_file.h"
#include "system/temporary_name.h"

namespace brindle::host {

namespace {

constexpr mode_t kAllReadAndWrite = 0666;  // without those of the user's mask
constexpr mode_t kRights = 0777;

std::string system_reason() {
    return std::generic_category().message(errno);
}

// Some file systems cannot flush folders.
bool flush_folder_of(const std::filesystem::path& path) {
    const std::filesystem::path folder = path.parent_path();
    const int opened =
        open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened == -1) {
        return errno == EACCES;
    }
    const bool is_flushed = fsync(opened) == 0 || errno == EINVAL;
    close(opened);
    return is_flushed;
}

}  // namespace

struct NewFile::Handle {
    explicit Handle(const std::string& name)
        : file(open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kAllReadAndWrite)) {}
    ~Handle() {
        if (file != -1) {
            close(file);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    int file;
};

NewFile::NewFile() = default;

NewFile::~NewFile() {
    handle_.reset();
    if (!temporary_.empty()) {
        unlink(temporary_.c_str());
    }
}

std::optional<std::string> NewFile::create(const std::string& name) {
    struct stat status {};
    const bool exists = lstat(name.c_str(), &status) == 0;
    target_ = name;
    if (exists) {
        // A symbolic link stays; the file that it names is replaced.
        std::error_code error;
        target_ = std::filesystem::canonical(name, error).string();
        if (error) {
            return error.message();
        }
        std::int64_t size = 0;
        if (auto reason = reason_against_file(target_, size)) {
            return reason;
        }
        if (auto reason = reason_against_replacing(target_)) {
            return reason;
        }
        if (stat(target_.c_str(), &status) != 0) {
            return system_reason();
        }
    }
    const std::string temporary = temporary_name_beside(target_);
    handle_ = std::make_unique<Handle>(temporary);
    if (handle_->file == -1) {
        return system_reason();
    }
    temporary_ = temporary;
    if (exists && fchmod(handle_->file, status.st_mode & kRights) != 0) {
        return system_reason();
    }
    return std::nullopt;
}

std::optional<std::string> NewFile::append(std::string_view text) const {
    while (!text.empty()) {
        const ssize_t done = write(handle_->file, text.data(), text.size());
        if (done < 0 && errno == EINTR) {
            continue;
        }
        if (done <= 0) {
            return system_reason();
        }
        text.remove_prefix(static_cast<std::size_t>(done));
    }
    return std::nullopt;
}

std::optional<std::string> NewFile::complete() {
    // Some file systems report only now that a write has failed.
    if (fsync(handle_->file) != 0 || close(std::exchange(handle_->file, -1)) != 0 ||
        std::rename(temporary_.c_str(), target_.c_str()) != 0) {
        return system_reason();
    }
    temporary_.clear();
    return flush_folder_of(target_) ? std::nullopt : std::optional(system_reason());
}

}  // namespace brindle::host
