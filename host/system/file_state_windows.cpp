#include "system/file_state.h"
#include "system/windows_handle.h"

namespace brindle::host {

namespace {

std::uint64_t joined(DWORD high, DWORD low) {
    constexpr int kLowBits = 32;
    return std::uint64_t{high} << kLowBits | low;
}

}  // namespace

std::optional<FileState> state_of(const std::string& name) {
    const WindowsHandle file(name, FILE_READ_ATTRIBUTES);
    BY_HANDLE_FILE_INFORMATION found{};
    if (!file.is_open() || GetFileInformationByHandle(file.get(), &found) == 0) {
        return std::nullopt;
    }
    const FILETIME modified = found.ftLastWriteTime;
    FileState state;
    state.volume = found.dwVolumeSerialNumber;
    state.number = joined(found.nFileIndexHigh, found.nFileIndexLow);
    state.size = static_cast<std::int64_t>(joined(found.nFileSizeHigh, found.nFileSizeLow));
    state.links = found.nNumberOfLinks;
    state.modified =
        static_cast<std::int64_t>(joined(modified.dwHighDateTime, modified.dwLowDateTime));
    return state;
}

std::optional<std::string> restore_modification_time(const std::string& name,
                                                     const FileState& before) {
    const WindowsHandle file(name, FILE_WRITE_ATTRIBUTES);
    ULARGE_INTEGER ticks{};
    ticks.QuadPart = static_cast<std::uint64_t>(before.modified);
    const FILETIME modified{ticks.LowPart, ticks.HighPart};
    if (!file.is_open() || SetFileTime(file.get(), nullptr, nullptr, &modified) == 0) {
        return "Saved, but the modification time could not be put back: Windows error " +
               std::to_string(GetLastError());
    }
    return std::nullopt;
}

}  // namespace brindle::host
