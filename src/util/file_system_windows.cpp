#include "util/file_system_windows.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <windows.h>

#include <brindle/error.h>

#include "util/binary_file_windows.h"
#include "util/disk_name_windows.h"
#include "util/system_error_windows.h"

namespace brindle {
namespace {

// A rebuild reads the old file by one handle while it asks by another whether it may be written.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
struct Opening {
    DWORD access;
    DWORD disposition;
};

constexpr Opening kCreateNew = {GENERIC_READ | GENERIC_WRITE, CREATE_NEW};

Opening opening_of(OpenMode mode) {
    switch (mode) {
        case OpenMode::Read:
            return {GENERIC_READ, OPEN_EXISTING};
        case OpenMode::ReadWrite:
            return {GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING};
        case OpenMode::ReadWriteOrCreate:
            return {GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS};
    }
    return {GENERIC_READ, OPEN_EXISTING};
}

// True when `file` owns the opened file now; else GetLastError() tells why not.
bool open_into(WindowsFile& file, const std::wstring& name, const Opening& opening) {
    void* const handle = ::CreateFileW(name.c_str(), opening.access, kShareAll, nullptr,
                                       opening.disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    file.adopt(handle);
    return true;
}

// The folder part with its separator, also the drive of "C:song.mp3"; empty when there is none.
String folder_of(const String& name) {
    return name.substr(0, name.find_last_of(u"\\/:") + 1);
}

// The exclusive creation finds what is taken; this need only differ from one try to the next and
// between programs.
String unique_name(unsigned salt) {
    constexpr char16_t kDigits[] = u"0123456789abcdef";
    LARGE_INTEGER now{};
    ::QueryPerformanceCounter(&now);
    std::uint64_t number = static_cast<std::uint64_t>(now.QuadPart) << 16U;
    number ^= static_cast<std::uint64_t>(::GetCurrentProcessId()) << 40U;
    number ^= static_cast<std::uint64_t>(::GetCurrentThreadId()) << 8U;
    String name = u".brindle-";
    for (number += salt; number != 0; number >>= 4U) {
        name.push_back(kDigits[number & 0xFU]);
    }
    return name;
}

struct CloseHandleOf {
    using pointer = void*;
    void operator()(void* handle) const { ::CloseHandle(handle); }
};

std::wstring final_name(const std::wstring& name) {
    void* const opened =
        ::CreateFileW(name.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        raise_last_error(FileAction::Open);
    }
    const std::unique_ptr<void, CloseHandleOf> file(opened);
    std::wstring target(MAX_PATH, L'\0');
    DWORD size = ::GetFinalPathNameByHandleW(opened, target.data(),
                                             static_cast<DWORD>(target.size()), VOLUME_NAME_DOS);
    if (size >= target.size()) {
        target.resize(size);
        size = ::GetFinalPathNameByHandleW(opened, target.data(), static_cast<DWORD>(target.size()),
                                           VOLUME_NAME_DOS);
    }
    if (size == 0) {
        raise_last_error(FileAction::Open);
    }
    target.resize(size);
    return target;
}

bool is_read_only(const std::wstring& name) {
    const DWORD attributes = ::GetFileAttributesW(name.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

// Indexers and virus scanners open a file that was just written, and close it again soon: an
// attempt whose failure `is_passing` is repeated for a second. The processor goes to others
// meanwhile.
template <typename Attempt, typename IsPassing>
void attempt_for_a_second(Attempt attempt, IsPassing is_passing) {
    constexpr ULONGLONG kMilliseconds = 1'000;
    constexpr DWORD kPause = 10;
    const ULONGLONG begin = ::GetTickCount64();
    while (attempt() == 0) {
        const DWORD error = ::GetLastError();
        if (!is_passing(error) || ::GetTickCount64() - begin >= kMilliseconds) {
            ::SetLastError(error);
            raise_last_error(FileAction::Name);
        }
        ::Sleep(kPause);
    }
}

}  // namespace

std::unique_ptr<BinaryFile> WindowsFileSystem::open(const String& name, OpenMode mode) {
    const std::wstring path = disk_name(name);
    auto file = std::make_unique<WindowsFile>();
    if (!open_into(*file, path, opening_of(mode))) {
        raise_last_error(FileAction::Open);
    }
    file->require_regular_file();
    return file;
}

bool WindowsFileSystem::exists(const String& name) {
    // The search also takes three more wildcards, which no name of a file contains.
    constexpr std::u16string_view kNeverInNames = u"<>\"|";
    if (name.empty() || name.back() == u'\\' || name.back() == u'/' ||
        name.find(u'\0') != String::npos || name.find_first_of(kNeverInNames) != String::npos) {
        return false;
    }
    WIN32_FIND_DATAW entry{};
    void* const search = ::FindFirstFileW(disk_name(name).c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return false;
    }
    ::FindClose(search);
    return true;
}

String WindowsFileSystem::resolve_links(const String& name) {
    const std::wstring path = disk_name(name);
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return name;
    }
    const std::wstring target = final_name(path);
    return {target.begin(), target.end()};
}

// Only opening it tells about access lists and other programs' share modes.
void WindowsFileSystem::require_writable(const String& name) {
    open(name, OpenMode::ReadWrite)->close();
}

FileState WindowsFileSystem::state(const String& name) {
    WindowsFile file;
    if (!open_into(file, disk_name(name), {FILE_READ_ATTRIBUTES, OPEN_EXISTING})) {
        raise_last_error(FileAction::Name);
    }
    return file.state();
}

std::unique_ptr<BinaryFile> WindowsFileSystem::create_beside(const String& neighbour,
                                                             String& name) {
    constexpr unsigned kMaxAttempts = 100;
    auto file = std::make_unique<WindowsFile>();
    for (unsigned attempt = 1;; ++attempt) {
        String unique = folder_of(neighbour) + unique_name(attempt);
        if (open_into(*file, disk_name(unique), kCreateNew)) {
            name = std::move(unique);
            return file;
        }
        if (::GetLastError() != ERROR_FILE_EXISTS || attempt == kMaxAttempts) {
            raise_last_error(FileAction::Open);
        }
    }
}

void WindowsFileSystem::copy_attributes(const String& /*from*/, BinaryFile& /*to*/) {}

bool WindowsFileSystem::clone(BinaryFile& /*from*/, BinaryFile& /*to*/) {
    return false;
}

void WindowsFileSystem::remove(const String& name) {
    const std::wstring path = disk_name(name);
    attempt_for_a_second([&] { return ::DeleteFileW(path.c_str()); },
                         [](DWORD error) { return error == ERROR_SHARING_VIOLATION; });
}

void WindowsFileSystem::replace(const String& from, const String& to) {
    const std::wstring old_path = disk_name(from);
    const std::wstring new_path = disk_name(to);
    attempt_for_a_second(
        [&] {
            return ::MoveFileExW(old_path.c_str(), new_path.c_str(),
                                 MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
        },
        // What is open under the new name is an access denied, and so is what is read-only.
        [&](DWORD error) {
            return error == ERROR_SHARING_VIOLATION ||
                   (error == ERROR_ACCESS_DENIED && !is_read_only(new_path));
        });
}

// The rename has written through.
void WindowsFileSystem::flush_folder_of(const String& /*name*/) {}

}  // namespace brindle
