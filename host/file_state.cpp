#include "file_state.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace brindle::host {

namespace {

std::string failure(const char* what) {
    return std::string("Saved, but ") + what +
           " could not be put back: " + std::generic_category().message(errno);
}

}  // namespace

bool FileState::is_same_file(const FileState& other) const {
    return status.st_dev == other.status.st_dev && status.st_ino == other.status.st_ino;
}

std::optional<FileState> state_of(const std::string& name) {
    FileState state{};
    if (stat(name.c_str(), &state.status) != 0) {
        return std::nullopt;
    }
    return state;
}

std::optional<std::string> restore_state(const std::string& name, const FileState& before) {
    constexpr mode_t kPermissions = 07777;
    const std::optional<FileState> now = state_of(name);
    if (!now) {
        return failure("the modification time");
    }
    // The owner first: a change of it takes some permissions away.
    const bool is_owner_kept =
        now->status.st_uid == before.status.st_uid && now->status.st_gid == before.status.st_gid;
    if (!is_owner_kept && geteuid() == 0 &&
        chown(name.c_str(), before.status.st_uid, before.status.st_gid) != 0) {
        return failure("the owner");
    }
    if ((now->status.st_mode != before.status.st_mode || !is_owner_kept) &&
        chmod(name.c_str(), before.status.st_mode & kPermissions) != 0) {
        return failure("the mode");
    }
    const std::array<timespec, 2> times{timespec{0, UTIME_OMIT}, before.status.st_mtim};
    if (utimensat(AT_FDCWD, name.c_str(), times.data(), 0) != 0) {
        return failure("the modification time");
    }
    return std::nullopt;
}

}  // namespace brindle::host
