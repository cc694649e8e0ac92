#include <algorithm>

#include "system/calls_windows.h"
#include "system/file_state.h"
#include "system/windows_handle.h"

namespace brindle::host {

namespace {

// Those that a user gives to a file. The one for backup programs belongs to the last write.
constexpr DWORD kUserAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                                  FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

// 0 lets the time as it is, and what is less has special meanings.
LARGE_INTEGER time_to_set(std::int64_t time) {
    LARGE_INTEGER set{};
    set.QuadPart = std::max<std::int64_t>(time, 0);
    return set;
}

}  // namespace

std::optional<FileState> state_of(const std::string& name) {
    const WindowsHandle file(name, FILE_READ_ATTRIBUTES);
    BY_HANDLE_FILE_INFORMATION found{};
    if (!file.is_open() || GetFileInformationByHandle(file.get(), &found) == 0) {
        return std::nullopt;
    }
    FileState state;
    state.volume = found.dwVolumeSerialNumber;
    state.number = static_cast<std::uint64_t>(joined(found.nFileIndexHigh, found.nFileIndexLow));
    state.size = joined(found.nFileSizeHigh, found.nFileSizeLow);
    state.links = found.nNumberOfLinks;
    state.modified = ticks(found.ftLastWriteTime);
    state.accessed = ticks(found.ftLastAccessTime);
    state.created = ticks(found.ftCreationTime);
    state.mode = found.dwFileAttributes;
    return state;
}

std::optional<std::string> restore_modification_time(const std::string& name,
                                                     const FileState& before) {
    const WindowsHandle file(name, FILE_WRITE_ATTRIBUTES);
    ULARGE_INTEGER ticks{};
    ticks.QuadPart = static_cast<std::uint64_t>(before.modified);
    const FILETIME modified{ticks.LowPart, ticks.HighPart};
    if (!file.is_open() || SetFileTime(file.get(), nullptr, nullptr, &modified) == 0) {
        return "Saved, but the modification time could not be put back: " + system_reason();
    }
    return std::nullopt;
}

std::optional<std::string> restore_state(const std::string& name, const FileState& before) {
    const WindowsHandle file(name, FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES);
    FILE_BASIC_INFO state{};
    const bool is_known =
        file.is_open() &&
        GetFileInformationByHandleEx(file.get(), FileBasicInfo, &state, sizeof(state)) != 0;
    state.CreationTime = time_to_set(before.created);
    state.LastAccessTime = time_to_set(before.accessed);
    state.LastWriteTime = time_to_set(before.modified);
    state.ChangeTime = time_to_set(0);
    state.FileAttributes =
        (state.FileAttributes & ~kUserAttributes) | (before.mode & kUserAttributes);
    if (!is_known ||
        SetFileInformationByHandle(file.get(), FileBasicInfo, &state, sizeof(state)) == 0) {
        return "Its times and attributes could not be put back: " + system_reason();
    }
    return std::nullopt;
}

}  // namespace brindle::host
