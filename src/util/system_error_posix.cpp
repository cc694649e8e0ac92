#include "util/system_error_posix.h"

#include <cerrno>

#include <sys/stat.h>

namespace brindle {

RuntimeError runtime_error(int code, FileAction action) noexcept {
    switch (code) {
        case ENOENT:
            return RuntimeError::FileNotFound;
        case ENOTDIR:
        case ENAMETOOLONG:
            return RuntimeError::PathNotFound;
        case EACCES:
        case EPERM:
        case EROFS:
        case EBUSY:
            return action == FileAction::Name ? RuntimeError::PermissionDenied
                                              : RuntimeError::PathFileAccess;
        case ETXTBSY:
            return RuntimeError::PermissionDenied;
        case EISDIR:
        case ENXIO:
        case ENODEV:
        case ELOOP:
            return RuntimeError::PathFileAccess;
        case EEXIST:
            return RuntimeError::FileAlreadyExists;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return RuntimeError::DiskFull;
        case EMFILE:
        case ENFILE:
            return RuntimeError::TooManyFiles;
        case ENOMEM:
            return RuntimeError::OutOfMemory;
        default:
            return RuntimeError::DeviceInputOutput;
    }
}

RuntimeError runtime_error(int code, FileAction action, const std::string& name) {
    const std::string folder = folder_of(name);
    struct stat status {};
    if (code == ENOENT && !folder.empty() && ::stat(folder.c_str(), &status) != 0) {
        return RuntimeError::PathNotFound;
    }
    return runtime_error(code, action);
}

std::string folder_of(const std::string& name) {
    const std::size_t slash = name.rfind('/');
    return slash == std::string::npos ? std::string() : name.substr(0, slash + 1);
}

}  // namespace brindle
