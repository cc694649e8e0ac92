#include <array>
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

#include <sys/stat.h>

#include "file_state.h"

namespace brindle::host {

namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;

std::string failure(const char* what) {
    return std::string("Saved, but ") + what +
           " could not be put back: " + std::generic_category().message(errno);
}

}  // namespace

std::optional<FileState> state_of(const std::string& name) {
    struct stat status {};
    if (stat(name.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return FileState{.volume = status.st_dev,
                     .number = status.st_ino,
                     .size = status.st_size,
                     .modified = status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec,
                     .mode = status.st_mode,
                     .owner = status.st_uid,
                     .group = status.st_gid};
}

std::optional<std::string> restore_state(const std::string& name, const FileState& before) {
    constexpr mode_t kPermissions = 07777;
    const std::optional<FileState> now = state_of(name);
    if (!now) {
        return failure("the modification time");
    }
    // The owner first: a change of it takes some permissions away.
    const bool is_owner_kept = now->owner == before.owner && now->group == before.group;
    if (!is_owner_kept && geteuid() == 0 && chown(name.c_str(), before.owner, before.group) != 0) {
        return failure("the owner");
    }
    if ((now->mode != before.mode || !is_owner_kept) &&
        chmod(name.c_str(), before.mode & kPermissions) != 0) {
        return failure("the mode");
    }
    // Before 1970 the rest is counted down from the second; the system wants it counted up.
    std::int64_t seconds = before.modified / kNanoseconds;
    std::int64_t rest = before.modified % kNanoseconds;
    if (rest < 0) {
        --seconds;
        rest += kNanoseconds;
    }
    const std::array<timespec, 2> times{timespec{0, UTIME_OMIT}, timespec{seconds, rest}};
    if (utimensat(AT_FDCWD, name.c_str(), times.data(), 0) != 0) {
        return failure("the modification time");
    }
    return std::nullopt;
}

}  // namespace brindle::host
