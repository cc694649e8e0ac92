#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <span>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <sys/stat.h>

#include "system/file_access.h"
#include "system/new_file.h"
#include "system/posix_calls.h"
#include "system/temporary_name.h"

namespace brindle::host {

namespace {

constexpr mode_t kAllReadAndWrite = 0666;  // without those of the user's mask
constexpr mode_t kRights = 0777;

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
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    return write_all(handle_->file, bytes) ? std::nullopt : std::optional(system_reason());
}

std::optional<std::string> NewFile::complete() {
    // Some file systems report only now that a write has failed.
    if (fsync(handle_->file) != 0 || close(std::exchange(handle_->file, -1)) != 0 ||
        std::rename(temporary_.c_str(), target_.c_str()) != 0) {
        return system_reason();
    }
    temporary_.clear();
    return flush_folder(std::filesystem::path(target_).parent_path());
}

}  // namespace brindle::host
