#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "system/file_access.h"
#include "system/file_path.h"
#include "system/new_file.h"
#include "system/temporary_name.h"
#include "system/windows_handle.h"

namespace brindle::host {

namespace {

// In the words that other systems have for it.
std::string system_reason() {
    switch (const DWORD error = GetLastError()) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
            return std::generic_category().message(ENOENT);
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
            return std::generic_category().message(EACCES);
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return std::generic_category().message(ENOSPC);
        default:
            return "Windows error " + std::to_string(error);
    }
}

}  // namespace

struct NewFile::Handle {
    explicit Handle(const std::string& name)
        : file(CreateFileW(wide_name(name).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                           CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    ~Handle() {
        if (file != INVALID_HANDLE_VALUE) {
            CloseHandle(file);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    HANDLE file;
};

NewFile::NewFile() = default;

NewFile::~NewFile() {
    handle_.reset();
    if (!temporary_.empty()) {
        DeleteFileW(wide_name(temporary_).c_str());
    }
}

std::optional<std::string> NewFile::create(const std::string& name) {
    target_ = name;
    if (GetFileAttributesW(wide_name(name).c_str()) != INVALID_FILE_ATTRIBUTES) {
        // A symbolic link stays; the file that it names is replaced.
        std::error_code error;
        target_ = name_of(std::filesystem::canonical(path_of(name), error));
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
    }
    const std::string temporary = temporary_name_beside(target_);
    handle_ = std::make_unique<Handle>(temporary);
    if (handle_->file == INVALID_HANDLE_VALUE) {
        return system_reason();
    }
    temporary_ = temporary;
    return std::nullopt;
}

std::optional<std::string> NewFile::append(std::string_view text) const {
    constexpr std::size_t kMaxWrite = std::size_t{1} << 30U;
    while (!text.empty()) {
        const std::size_t part = std::min(text.size(), kMaxWrite);
        DWORD done = 0;
        if (WriteFile(handle_->file, text.data(), static_cast<DWORD>(part), &done, nullptr) == 0) {
            return system_reason();
        }
        text.remove_prefix(done);
    }
    return std::nullopt;
}

std::optional<std::string> NewFile::complete() {
    if (FlushFileBuffers(handle_->file) == 0 ||
        CloseHandle(std::exchange(handle_->file, INVALID_HANDLE_VALUE)) == 0 ||
        MoveFileExW(wide_name(temporary_).c_str(), wide_name(target_).c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
        return system_reason();
    }
    temporary_.clear();
    return std::nullopt;
}

}  // namespace brindle::host
