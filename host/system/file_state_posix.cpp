#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <system_error>

#include <sys/stat.h>
#ifdef __linux__
#include <sys/xattr.h>
#endif

#include "system/file_state.h"

namespace brindle::host {

namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;
constexpr mode_t kSetIds = S_ISUID | S_ISGID | S_ISVTX;
constexpr mode_t kAccessBits = S_IRWXU | S_IRWXG | S_IRWXO;

std::int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * kNanoseconds + time.tv_nsec;
}

// Before 1970 the rest is counted down from the second; the system expects it counted up.
timespec time_of(std::int64_t nanoseconds) {
    std::int64_t seconds = nanoseconds / kNanoseconds;
    std::int64_t rest = nanoseconds % kNanoseconds;
    if (rest < 0) {
        --seconds;
        rest += kNanoseconds;
    }
    return {seconds, rest};
}

#ifdef __linux__
bool is_user_attribute(std::string_view attribute) {
    return attribute.starts_with("user.");
}
#endif

std::map<std::string, std::string> user_attributes_of(const std::string& name) {
    std::map<std::string, std::string> attributes;
#ifdef __linux__
    const ssize_t size = listxattr(name.c_str(), nullptr, 0);
    if (size <= 0) {
        return attributes;
    }
    std::string names(static_cast<std::size_t>(size), '\0');
    const ssize_t listed = listxattr(name.c_str(), names.data(), names.size());
    names.resize(static_cast<std::size_t>(std::max<ssize_t>(listed, 0)));
    for (std::size_t begin = 0; begin < names.size();) {
        const std::string attribute = names.c_str() + begin;
        begin += attribute.size() + 1;
        if (!is_user_attribute(attribute)) {
            continue;
        }
        const ssize_t length = getxattr(name.c_str(), attribute.c_str(), nullptr, 0);
        std::string value(static_cast<std::size_t>(std::max<ssize_t>(length, 0)), '\0');
        if (getxattr(name.c_str(), attribute.c_str(), value.data(), value.size()) >= 0) {
            attributes.emplace(attribute, value);
        }
    }
#else
    static_cast<void>(name);
#endif
    return attributes;
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
                     .modified = nanoseconds(status.st_mtim),
                     .accessed = nanoseconds(status.st_atim),
                     .mode = status.st_mode,
                     .owner = status.st_uid,
                     .group = status.st_gid,
                     .links = status.st_nlink,
                     .user_attributes = user_attributes_of(name)};
}

std::optional<std::string> restore_modification_time(const std::string& name,
                                                     const FileState& before) {
    const std::array<timespec, 2> times{timespec{0, UTIME_OMIT}, time_of(before.modified)};
    if (utimensat(AT_FDCWD, name.c_str(), times.data(), 0) != 0) {
        return "Saved, but the modification time could not be put back: " +
               std::generic_category().message(errno);
    }
    return std::nullopt;
}

std::optional<std::string> restore_state(const std::string& name, const FileState& before) {
    const auto reason = [](const std::string& what) {
        return what + " could not be put back: " + std::generic_category().message(errno);
    };
    const std::optional<FileState> now = state_of(name);
    if (!now) {
        return reason("Its times");
    }
    const mode_t rights = before.mode & kAccessBits;
    if ((now->mode & kAccessBits) != rights &&
        chmod(name.c_str(), (now->mode & kSetIds) | rights) != 0) {
        return reason("Its access rights");
    }
#ifdef __linux__
    for (const auto& [attribute, value] : before.user_attributes) {
        const auto kept = now->user_attributes.find(attribute);
        const bool is_same = kept != now->user_attributes.end() && kept->second == value;
        if (is_user_attribute(attribute) && !is_same &&
            setxattr(name.c_str(), attribute.c_str(), value.data(), value.size(), 0) != 0) {
            return reason("Its attribute " + attribute);
        }
    }
#endif
    const std::array<timespec, 2> times{time_of(before.accessed), time_of(before.modified)};
    if (utimensat(AT_FDCWD, name.c_str(), times.data(), 0) != 0) {
        return reason("Its times");
    }
    return std::nullopt;
}

}  // namespace brindle::host
