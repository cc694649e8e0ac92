#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <sys/stat.h>

#include <brindle/error.h>

#include "system/file_access.h"
#include "system/posix_calls.h"

namespace brindle::host {

namespace {

int open_to_read(const std::string& name) {
    return open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

}  // namespace

std::optional<std::string> read_status(const std::string& name, FileStatus& status) {
    struct stat found {};
    if (stat(name.c_str(), &found) != 0) {
        return system_reason();
    }
    status.kind = S_ISREG(found.st_mode)   ? FileKind::Regular
                  : S_ISDIR(found.st_mode) ? FileKind::Folder
                                           : FileKind::Other;
    status.size = found.st_size;
    status.modified = found.st_mtime;
    return std::nullopt;
}

std::optional<std::string> reason_against_reading(const std::string& name) {
    const int file = open_to_read(name);
    if (file == -1) {
        return system_reason();
    }
    close(file);
    return std::nullopt;
}

std::optional<std::string> reason_against_writing(const std::string& name) {
    if (faccessat(AT_FDCWD, name.c_str(), W_OK, AT_EACCESS) != 0) {
        return system_reason();
    }
    return std::nullopt;
}

std::optional<std::string> reason_against_replacing(const std::string& name) {
    if (auto reason = reason_against_writing(name)) {
        return reason;
    }
    std::error_code error;
    const auto folder = std::filesystem::canonical(name, error).parent_path();
    if (error) {
        return error.message();
    }
    if (faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
        return system_reason();
    }
    return std::nullopt;
}

struct ReadOnlyFile::Handle {
    explicit Handle(const std::string& name) : file(open_to_read(name)) {}
    ~Handle() {
        if (file != -1) {
            close(file);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    int file;
};

ReadOnlyFile::ReadOnlyFile(std::string name) : name_(std::move(name)) {}

ReadOnlyFile::~ReadOnlyFile() = default;

std::string ReadOnlyFile::read(std::int64_t offset, std::size_t count) {
    if (!handle_) {
        handle_ = std::make_unique<Handle>(name_);
    }
    std::string bytes(count, '\0');
    const ssize_t done = pread(handle_->file, bytes.data(), bytes.size(), offset);
    if (done < 0) {
        throw Error(RuntimeError::DeviceInputOutput, u"brindle");
    }
    bytes.resize(static_cast<std::size_t>(done));
    return bytes;
}

std::string read_bytes(const std::string& name, std::int64_t offset, std::size_t count) {
    return ReadOnlyFile(name).read(offset, count);
}

}  // namespace brindle::host
