#include <cerrno>
#include <system_error>
#include <utility>

#include "system/file_access.h"
#include "system/read_failure.h"
#include "system/windows_handle.h"

namespace brindle::host {

namespace {

// In the words that other systems have for it, so that scripts know them everywhere.
std::string system_reason(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
            return std::generic_category().message(ENOENT);
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
            return std::generic_category().message(EACCES);
        default:
            return "Windows error " + std::to_string(error);
    }
}

}  // namespace

std::optional<std::string> reason_against_file(const std::string& name, std::int64_t& size) {
    WIN32_FILE_ATTRIBUTE_DATA found{};
    if (GetFileAttributesExW(wide_name(name).c_str(), GetFileExInfoStandard, &found) == 0) {
        return system_reason(GetLastError());
    }
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return std::generic_category().message(EISDIR);
    }
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_DEVICE) != 0) {
        return "Not a regular file";
    }
    ULARGE_INTEGER length{};
    length.HighPart = found.nFileSizeHigh;
    length.LowPart = found.nFileSizeLow;
    size = static_cast<std::int64_t>(length.QuadPart);
    return std::nullopt;
}

std::optional<std::string> reason_against_reading(const std::string& name) {
    const WindowsHandle file(name, GENERIC_READ);
    if (!file.is_open()) {
        return system_reason(GetLastError());
    }
    return std::nullopt;
}

std::optional<std::string> reason_against_writing(const std::string& name) {
    const WindowsHandle file(name, GENERIC_READ | GENERIC_WRITE);
    if (!file.is_open()) {
        return system_reason(GetLastError());
    }
    return std::nullopt;
}

std::optional<std::string> reason_against_replacing(const std::string& name) {
    return reason_against_writing(name);
}

struct ReadOnlyFile::Handle {
    explicit Handle(const std::string& name) : file(name, GENERIC_READ) {}

    WindowsHandle file;
};

ReadOnlyFile::ReadOnlyFile(std::string name) : name_(std::move(name)) {}

ReadOnlyFile::~ReadOnlyFile() = default;

std::string ReadOnlyFile::read(std::int64_t offset, std::size_t count) {
    if (!handle_) {
        handle_ = std::make_unique<Handle>(name_);
    }
    const WindowsHandle& file = handle_->file;
    LARGE_INTEGER place{};
    place.QuadPart = offset;
    DWORD done = 0;
    std::string bytes(count, '\0');
    if (!file.is_open() || SetFilePointerEx(file.get(), place, nullptr, FILE_BEGIN) == 0 ||
        ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr) == 0) {
        note_read_failure();
        return {};
    }
    bytes.resize(done);
    return bytes;
}

std::string read_bytes(const std::string& name, std::int64_t offset, std::size_t count) {
    return ReadOnlyFile(name).read(offset, count);
}

}  // namespace brindle::host
