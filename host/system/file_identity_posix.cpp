#include <sys/stat.h>

#include "system/file_identity.h"

namespace brindle::host {

std::optional<FileIdentity> identity_of(const std::string& name) {
    struct stat status {};
    if (stat(name.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return FileIdentity{.volume = status.st_dev,
                        .number = status.st_ino,
                        .size = status.st_size,
                        .modified = status.st_mtim.tv_sec,
                        .modified_nanoseconds = status.st_mtim.tv_nsec,
                        .changed = status.st_ctim.tv_sec,
                        .changed_nanoseconds = status.st_ctim.tv_nsec};
}

}  // namespace brindle::host
