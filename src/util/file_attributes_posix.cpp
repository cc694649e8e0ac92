#include "util/file_attributes_posix.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <unistd.h>
#include <vector>

#include <sys/stat.h>
#ifdef __linux__
#include <sys/xattr.h>
#endif

#include <brindle/error.h>

#include "util/system_error_posix.h"

namespace brindle {

namespace {

constexpr mode_t kPermissions = 07777;
constexpr mode_t kSetIds = S_ISUID | S_ISGID;
constexpr mode_t kAccessBits = S_IRWXU | S_IRWXG | S_IRWXO;

struct Kept {
    bool owner = true;
    bool group = true;
};

Kept copy_owner(const struct stat& old_status, int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        throw Error(runtime_error(errno, FileAction::Transfer));
    }
    if (status.st_uid == old_status.st_uid && status.st_gid == old_status.st_gid) {
        return {};
    }
    if (::fchown(descriptor, old_status.st_uid, old_status.st_gid) == 0) {
        return {};
    }
    constexpr auto kUnchanged = static_cast<uid_t>(-1);
    const bool keeps_group = status.st_gid == old_status.st_gid ||
                             ::fchown(descriptor, kUnchanged, old_status.st_gid) == 0;
    return {.owner = status.st_uid == old_status.st_uid, .group = keeps_group};
}

// The new group's members had the rights of others before; the old group's have them now.
mode_t mode_without_group(mode_t mode) {
    constexpr unsigned kGroupShift = 3;
    const mode_t others = mode & S_IRWXO;
    const mode_t group = (mode & S_IRWXG) >> kGroupShift;
    return (mode & ~static_cast<mode_t>(S_IRWXG | S_IRWXO)) | (others << kGroupShift) |
           (others & group);
}

#ifdef __linux__

constexpr const char* kAccessList = "system.posix_acl_access";
constexpr std::string_view kUserAttributes = "user.";

using Value = std::vector<std::uint8_t>;

// Nothing when the file has no attribute of that name, or the file system none at all.
std::optional<Value> attribute_of(const std::string& path, const char* name) {
    const auto raise_unless_missing = [] {
        if (errno != ENODATA && errno != ENOTSUP) {
            throw Error(RuntimeError::PermissionDenied);
        }
    };
    const ssize_t size = ::getxattr(path.c_str(), name, nullptr, 0);
    if (size < 0) {
        raise_unless_missing();
        return std::nullopt;
    }
    Value value(static_cast<std::size_t>(size));
    const ssize_t read = ::getxattr(path.c_str(), name, value.data(), value.size());
    if (read < 0) {
        raise_unless_missing();
        return std::nullopt;
    }
    value.resize(static_cast<std::size_t>(read));
    return value;
}

// The attribute's form, see acl(5) and the kernel's posix_acl_xattr.h: a version of four bytes,
// then entries of a tag (2 bytes), permissions (2) and an id (4), all of them little-endian.
constexpr std::size_t kListHeader = 4;
constexpr std::size_t kListEntry = 8;
constexpr std::size_t kEntryPermissions = 2;
constexpr std::uint8_t kOwningGroup = 0x04;
constexpr std::uint8_t kOthers = 0x20;

std::uint8_t* permissions_of(Value& list, std::uint8_t tag) {
    for (std::size_t entry = kListHeader; entry + kListEntry <= list.size(); entry += kListEntry) {
        if (list[entry] == tag && list[entry + 1] == 0) {
            return &list[entry + kEntryPermissions];
        }
    }
    return nullptr;
}

// As mode_without_group() does it for a file without a list.
void take_from_group(Value& list) {
    std::uint8_t* const group = permissions_of(list, kOwningGroup);
    std::uint8_t* const others = permissions_of(list, kOthers);
    if (group == nullptr || others == nullptr) {
        throw Error(RuntimeError::PermissionDenied);
    }
    const std::uint8_t had = *group;
    *group = *others;
    *others &= had;
}

// The mode that the file has with its list; the group's bits in it bound the list's entries.
std::optional<mode_t> copy_access_list(const std::string& path, int descriptor, Kept kept) {
    std::optional<Value> list = attribute_of(path, kAccessList);
    if (!list) {
        return std::nullopt;
    }
    if (!kept.group) {
        take_from_group(*list);
    }
    struct stat status {};
    if (::fsetxattr(descriptor, kAccessList, list->data(), list->size(), 0) != 0 ||
        ::fstat(descriptor, &status) != 0) {
        throw Error(RuntimeError::PermissionDenied);
    }
    return status.st_mode;
}

void copy_user_attributes(const std::string& path, int descriptor) {
    const ssize_t size = ::listxattr(path.c_str(), nullptr, 0);
    if (size <= 0) {
        return;
    }
    std::string names(static_cast<std::size_t>(size), '\0');
    const ssize_t read = ::listxattr(path.c_str(), names.data(), names.size());
    names.resize(read > 0 ? static_cast<std::size_t>(read) : 0);
    for (std::size_t begin = 0; begin < names.size();) {
        const char* const name = names.c_str() + begin;
        const std::string_view text(name);
        begin += text.size() + 1;
        if (text.substr(0, kUserAttributes.size()) != kUserAttributes) {
            continue;
        }
        Value value(static_cast<std::size_t>(
            std::max<ssize_t>(::getxattr(path.c_str(), name, nullptr, 0), 0)));
        const ssize_t held = ::getxattr(path.c_str(), name, value.data(), value.size());
        if (held >= 0) {
            (void)::fsetxattr(descriptor, name, value.data(), static_cast<std::size_t>(held), 0);
        }
    }
}

#else

std::optional<mode_t> copy_access_list(const std::string&, int, Kept) {
    return std::nullopt;
}
void copy_user_attributes(const std::string&, int) {}

#endif

}  // namespace

void remove_inherited_access_list(int descriptor) {
#ifdef __linux__
    // Where this fails there was none, or it gives nobody anything: the file's mode bounds it.
    (void)::fremovexattr(descriptor, kAccessList);
#else
    static_cast<void>(descriptor);
#endif
}

void copy_file_attributes(const std::string& path, int descriptor) {
    struct stat old_status {};
    if (::stat(path.c_str(), &old_status) != 0) {
        throw Error(runtime_error(errno, FileAction::Name, path));
    }
    const Kept kept = copy_owner(old_status, descriptor);
    // The list first: without it the mode's bits of the group would hold for the owning group.
    const std::optional<mode_t> listed = copy_access_list(path, descriptor, kept);
    mode_t mode = old_status.st_mode & kPermissions;
    if (listed) {
        mode = (mode & ~kAccessBits) | (*listed & kAccessBits);
    } else if (!kept.group) {
        mode = mode_without_group(mode);
    }
    if (!kept.owner || !kept.group) {
        mode &= ~kSetIds;
    }
    if (::fchmod(descriptor, mode) != 0) {
        throw Error(runtime_error(errno, FileAction::Name));
    }
    copy_user_attributes(path, descriptor);
}

}  // namespace brindle
