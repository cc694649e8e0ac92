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

std::map<std::string, std::string> user_attributes_of(const std::string& name) {
    std::map<std::string, std::string> attributes;
#ifdef __linux__
    constexpr std::string_view kPrefix = "user.";
    const ssize_t size = listxattr(name.c_str(), nullptr, 0);
    std::string names(static_cast<std::size_t>(std::max<ssize_t>(size, 0)), '\0');
    const ssize_t listed = listxattr(name.c_str(), names.data(), names.size());
    names.resize(static_cast<std::size_t>(std::max<ssize_t>(listed, 0)));
    for (std::size_t begin = 0; begin < names.size();) {
        const std::string attribute = names.c_str() + begin;
        begin += attribute.size() + 1;
        if (std::string_view(attribute).substr(0, kPrefix.size()) != kPrefix) {
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
                     .modified = status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec,
                     .mode = status.st_mode,
                     .owner = status.st_uid,
                     .group = status.st_gid,
                     .links = status.st_nlink,
                     .user_attributes = user_attributes_of(name)};
}

std::optional<std::string> restore_modification_time(const std::string& name,
                                                     const FileState& before) {
    // Before 1970 the rest is counted down from the second; the system wants it counted up.
    std::int64_t seconds = before.modified / kNanoseconds;
    std::int64_t rest = before.modified % kNanoseconds;
    if (rest < 0) {
        --seconds;
        rest += kNanoseconds;
    }
    const std::array<timespec, 2> times{timespec{0, UTIME_OMIT}, timespec{seconds, rest}};
    if (utimensat(AT_FDCWD, name.c_str(), times.data(), 0) != 0) {
        return "Saved, but the modification time could not be put back: " +
               std::generic_category().message(errno);
    }
    return std::nullopt;
}

}  // namespace brindle::host
