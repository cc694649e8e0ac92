#include <cerrno>
#include <system_error>
#include <utility>

#include <brindle/error.h>

#include "system/calls_windows.h"
#include "system/file_access.h"
#include "system/windows_handle.h"

namespace brindle::host {

std::optional<std::string> read_status(const std::string& name, FileStatus& status) {
    WIN32_FILE_ATTRIBUTE_DATA found{};
    if (GetFileAttributesExW(wide_name(name).c_str(), GetFileExInfoStandard, &found) == 0) {
        return system_reason();
    }
    const auto has = [&](DWORD attribute) { return (found.dwFileAttributes & attribute) != 0; };
    status.kind = has(FILE_ATTRIBUTE_DIRECTORY) ? FileKind::Folder
                  : has(FILE_ATTRIBUTE_DEVICE)  ? FileKind::Other
                                                : FileKind::Regular;
    status.size = joined(found.nFileSizeHigh, found.nFileSizeLow);
    status.modified = seconds_since_1970(found.ftLastWriteTime);
    return std::nullopt;
}

std::optional<std::string> reason_against_reading(const std::string& name) {
    const WindowsHandle file(name, GENERIC_READ);
    if (!file.is_open()) {
        return system_reason();
    }
    return std::nullopt;
}

std::optional<std::string> reason_against_writing(const std::string& name) {
    const WindowsHandle file(name, GENERIC_READ | GENERIC_WRITE);
    if (!file.is_open()) {
        return system_reason();
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
        throw Error(RuntimeError::DeviceInputOutput, u"brindle");
    }
    bytes.resize(done);
    return bytes;
}

std::string read_bytes(const std::string& name, std::int64_t offset, std::size_t count) {
    return ReadOnlyFile(name).read(offset, count);
}

}  // namespace brindle::host
