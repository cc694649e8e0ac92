#include "util/file_system_posix.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

#include <sys/random.h>
#include <sys/stat.h>
#ifdef __linux__
#include <linux/fs.h>
#include <sys/ioctl.h>
#endif

#include <brindle/error.h>
#include <brindle/text.h>

#include "util/binary_file_posix.h"
#include "util/file_attributes_posix.h"
#include "util/file_state_posix.h"
#include "util/system_error_posix.h"
#include "util/wildcard.h"

namespace brindle {
namespace {

// A new file's attributes; the process's umask takes away what it forbids.
constexpr mode_t kNewFileMode = 0666;
// Until a file has the rights of the one that it replaces.
constexpr mode_t kPrivateMode = 0600;

int flags_of(OpenMode mode) {
    switch (mode) {
        case OpenMode::ReadWrite:
            return O_RDWR;
        case OpenMode::ReadWriteOrCreate:
            return O_RDWR | O_CREAT;
        case OpenMode::Read:
            break;
    }
    return O_RDONLY;
}

// A pipe or a terminal must not block the host or become its terminal.
constexpr int kOpenFlags = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

// The name on disk. The system ends names at a NUL, so one inside would name another file.
std::string disk_name(const String& name) {
    std::string path = to_utf8(name);
    if (path.find('\0') != std::string::npos) {
        throw Error(RuntimeError::FileNotFound);
    }
    return path;
}

[[noreturn]] void raise(int code, FileAction action, const std::string& name) {
    throw Error(runtime_error(code, action, name));
}

// The descriptor, or -1 and errno.
int open_descriptor(const std::string& name, int flags, mode_t mode = kNewFileMode) {
    int descriptor = ::open(name.c_str(), flags | kOpenFlags, mode);
    while (descriptor < 0 && errno == EINTR) {
        descriptor = ::open(name.c_str(), flags | kOpenFlags, mode);
    }
    return descriptor;
}

std::uint64_t random_number(unsigned salt) {
    std::uint64_t number = 0;
    if (::getrandom(&number, sizeof number, GRND_NONBLOCK) != sizeof number) {
        // Before the system has gathered chance: the exclusive creation finds what is taken.
        timespec now{};
        ::clock_gettime(CLOCK_REALTIME, &now);
        number = (static_cast<std::uint64_t>(now.tv_nsec) << 32) ^
                 (static_cast<std::uint64_t>(::getpid()) << 8) ^ salt;
    }
    return number;
}

// Short for every name of the neighbour: a name has at most 255 bytes.
String unique_name(unsigned salt) {
    constexpr char16_t kDigits[] = u"0123456789abcdef";
    String name = u".brindle-";
    for (std::uint64_t number = random_number(salt); number != 0; number >>= 4) {
        name.push_back(kDigits[number & 0xF]);
    }
    return name;
}

bool entry_matches(const std::string& folder, std::u16string_view pattern) {
    const auto close_folder = [](DIR* open_folder) { ::closedir(open_folder); };
    const std::unique_ptr<DIR, decltype(close_folder)> entries(
        ::opendir(folder.empty() ? "." : folder.c_str()), close_folder);
    if (!entries) {
        return false;
    }
    while (const dirent* const entry = ::readdir(entries.get())) {
        if (matches_wildcard(pattern, from_utf8(entry->d_name))) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::unique_ptr<BinaryFile> PosixFileSystem::open(const String& name, OpenMode mode) {
    const std::string path = disk_name(name);
    auto file = std::make_unique<PosixFile>();
    const int descriptor = open_descriptor(path, flags_of(mode));
    if (descriptor < 0) {
        raise(errno, FileAction::Open, path);
    }
    file->adopt(descriptor);
    file->require_regular_file();
    return file;
}

bool PosixFileSystem::exists(const String& name) {
    if (name.empty() || name.back() == u'/' || name.find(u'\0') != String::npos) {
        return false;
    }
    const std::string path = to_utf8(name);
    struct stat status {};
    // The entry itself, as a folder's listing shows it: also a link to nowhere.
    if (::lstat(path.c_str(), &status) == 0) {
        return true;
    }
    const std::u16string_view pattern = std::u16string_view(name).substr(name.rfind(u'/') + 1);
    return has_wildcard(pattern) && entry_matches(folder_of(path), pattern);
}

String PosixFileSystem::resolve_links(const String& name) {
    const std::string path = disk_name(name);
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr),
                                                               &std::free);
    if (resolved) {
        return from_utf8(resolved.get());
    }
    if (errno != ENOENT) {
        raise(errno, FileAction::Open, path);
    }
    return name;
}

// Not by opening it: that would break the read leases of other programs.
void PosixFileSystem::require_writable(const String& name) {
    const std::string path = disk_name(name);
    if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
        raise(errno, FileAction::Open, path);
    }
}

FileState PosixFileSystem::state(const String& name) {
    const std::string path = disk_name(name);
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        raise(errno, FileAction::Name, path);
    }
    return file_state(status);
}

std::unique_ptr<BinaryFile> PosixFileSystem::create_beside(const String& neighbour, String& name) {
    constexpr unsigned kMaxAttempts = 100;
    auto file = std::make_unique<PosixFile>();
    const String folder = neighbour.substr(0, neighbour.rfind(u'/') + 1);
    for (unsigned attempt = 1;; ++attempt) {
        String unique = folder + unique_name(attempt);
        const std::string path = disk_name(unique);
        const int descriptor = open_descriptor(path, O_RDWR | O_CREAT | O_EXCL, kPrivateMode);
        if (descriptor >= 0) {
            file->adopt(descriptor);
            remove_inherited_access_list(descriptor);
            name = std::move(unique);
            return file;
        }
        if (errno != EEXIST || attempt == kMaxAttempts) {
            raise(errno, FileAction::Open, path);
        }
    }
}

void PosixFileSystem::copy_attributes(const String& from, BinaryFile& to) {
    copy_file_attributes(disk_name(from), dynamic_cast<PosixFile&>(to).descriptor());
}

bool PosixFileSystem::clone(BinaryFile& from, BinaryFile& to) {
#ifdef FICLONE
    const auto* const source = dynamic_cast<const PosixFile*>(&from);
    const auto* const target = dynamic_cast<const PosixFile*>(&to);
    return source != nullptr && target != nullptr &&
           ::ioctl(target->descriptor(), FICLONE, source->descriptor()) == 0;
#else
    static_cast<void>(from);
    static_cast<void>(to);
    return false;
#endif
}

void PosixFileSystem::remove(const String& name) {
    const std::string path = disk_name(name);
    if (::unlink(path.c_str()) != 0) {
        raise(errno, FileAction::Name, path);
    }
}

void PosixFileSystem::replace(const String& from, const String& to) {
    const std::string old_path = disk_name(from);
    const std::string new_path = disk_name(to);
    if (::rename(old_path.c_str(), new_path.c_str()) != 0) {
        const int code = errno;
        struct stat status {};
        const bool has_old = ::lstat(old_path.c_str(), &status) == 0;
        raise(code, FileAction::Name, has_old ? new_path : old_path);
    }
}

void PosixFileSystem::flush_folder_of(const String& name) {
    const std::string path = disk_name(name);
    const std::string folder = folder_of(path);
    const int descriptor = open_descriptor(folder.empty() ? "." : folder, O_RDONLY | O_DIRECTORY);
    if (descriptor < 0) {
        if (errno == EACCES) {
            return;  // a folder that may be written but not listed
        }
        raise(errno, FileAction::Open, path);
    }
    int result = ::fsync(descriptor);
    while (result != 0 && errno == EINTR) {
        result = ::fsync(descriptor);
    }
    const int code = errno;
    ::close(descriptor);
    // EINVAL: a file system that keeps its folders safe by itself, or not at all.
    if (result != 0 && code != EINVAL) {
        throw Error(runtime_error(code, FileAction::Transfer));
    }
}

}  // namespace brindle
