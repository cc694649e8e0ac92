#include <cstdint>
#include <filesystem>
#include <span>
#include <system_error>
#include <utility>

#include "system/calls_windows.h"
#include "system/file_access.h"
#include "system/file_path.h"
#include "system/new_file.h"
#include "system/temporary_name.h"
#include "system/windows_handle.h"

namespace brindle::host {

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
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    return write_all(handle_->file, bytes) ? std::nullopt : std::optional(system_reason());
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
