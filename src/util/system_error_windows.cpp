#include "util/system_error_windows.h"

#include <windows.h>

namespace brindle {
namespace {

// Not in every compiler's headers.
constexpr DWORD kDiskQuotaExceeded = 1295;

}  // namespace

RuntimeError runtime_error(std::uint32_t code, FileAction action) noexcept {
    switch (code) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_INVALID_NAME:
            return RuntimeError::FileNotFound;
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_DRIVE:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_FILENAME_EXCED_RANGE:
        case ERROR_DIRECTORY:
            return RuntimeError::PathNotFound;
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
        case ERROR_PRIVILEGE_NOT_HELD:
            return action == FileAction::Name ? RuntimeError::PermissionDenied
                                              : RuntimeError::PathFileAccess;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
        case ERROR_USER_MAPPED_FILE:
            return RuntimeError::PermissionDenied;
        case ERROR_CANT_ACCESS_FILE:
        case ERROR_CANT_RESOLVE_FILENAME:
        case ERROR_PIPE_BUSY:
            return RuntimeError::PathFileAccess;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return RuntimeError::FileAlreadyExists;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
        case kDiskQuotaExceeded:
        case ERROR_FILE_TOO_LARGE:
            return RuntimeError::DiskFull;
        case ERROR_TOO_MANY_OPEN_FILES:
            return RuntimeError::TooManyFiles;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
        case ERROR_COMMITMENT_LIMIT:
        case ERROR_NO_SYSTEM_RESOURCES:
            return RuntimeError::OutOfMemory;
        default:
            return RuntimeError::DeviceInputOutput;
    }
}

void raise_last_error(FileAction action) {
    throw Error(runtime_error(::GetLastError(), action));
}

}  // namespace brindle
