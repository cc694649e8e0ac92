#include <aclapi.h>
#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <memory>
#include <sddl.h>
#include <utility>
#include <windows.h>

#include "system/calls_windows.h"
#include "system/file_path.h"
#include "system/private_file.h"
#include "system/windows_handle.h"

namespace brindle::host {

namespace {

// One type for what all systems open.
HANDLE handle_of(std::intptr_t held) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    return reinterpret_cast<HANDLE>(held);
}

std::intptr_t held(HANDLE handle) {
    return reinterpret_cast<std::intptr_t>(handle);
}

// What the system allocates with LocalAlloc().
struct LocalMemory {
    void operator()(void* memory) const { LocalFree(memory); }
};
template <typename Type>
using Local = std::unique_ptr<Type, LocalMemory>;

// The account that the program runs for. An administrator's files would otherwise belong to all
// administrators.
class User {
public:
    User() {
        HANDLE token = nullptr;
        if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == 0) {
            return;
        }
        DWORD size = 0;
        is_known_ = GetTokenInformation(token, TokenUser, bytes_.data(),
                                        static_cast<DWORD>(bytes_.size()), &size) != 0;
        CloseHandle(token);
    }

    [[nodiscard]] PSID sid() const {
        return is_known_ ? reinterpret_cast<const TOKEN_USER*>(bytes_.data())->User.Sid : nullptr;
    }
    [[nodiscard]] bool is(PSID other) const {
        return is_known_ && other != nullptr && EqualSid(sid(), other) != 0;
    }

private:
    alignas(
        TOKEN_USER) std::array<std::uint8_t, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> bytes_{};
    bool is_known_ = false;
};

const User& user() {
    static const User known;
    return known;
}

// The rights of a new file or folder: all for the user, none for others, none from the folder
// above.
class PrivateSecurity {
public:
    explicit PrivateSecurity(const wchar_t* inheritance) {
        wchar_t* text = nullptr;
        if (user().sid() == nullptr || ConvertSidToStringSidW(user().sid(), &text) == 0) {
            return;
        }
        const Local<wchar_t> owned(text);
        const std::wstring sid = text;
        const std::wstring rights = L"O:" + sid + L"D:P(A;" + inheritance + L";FA;;;" + sid + L")";
        PSECURITY_DESCRIPTOR made = nullptr;
        if (ConvertStringSecurityDescriptorToSecurityDescriptorW(rights.c_str(), SDDL_REVISION_1,
                                                                 &made, nullptr) != 0) {
            descriptor_.reset(made);
            attributes_.lpSecurityDescriptor = made;
        }
    }

    // Nothing if the system does not know the user.
    [[nodiscard]] SECURITY_ATTRIBUTES* attributes() { return descriptor_ ? &attributes_ : nullptr; }

private:
    Local<void> descriptor_;
    SECURITY_ATTRIBUTES attributes_{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

// Administrators and the system can write every file anyhow.
bool may_write_anyhow(PSID account) {
    return user().is(account) || IsWellKnownSid(account, WinBuiltinAdministratorsSid) != 0 ||
           IsWellKnownSid(account, WinLocalSystemSid) != 0 ||
           IsWellKnownSid(account, WinCreatorOwnerRightsSid) != 0;
}

bool lets_others_write(const ACE_HEADER& entry) {
    constexpr ACCESS_MASK kWriting =
        FILE_WRITE_DATA | FILE_APPEND_DATA | WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;
    if (entry.AceType == ACCESS_DENIED_ACE_TYPE || (entry.AceFlags & INHERIT_ONLY_ACE) != 0) {
        return false;
    }
    if (entry.AceType != ACCESS_ALLOWED_ACE_TYPE) {
        return true;  // allows under conditions
    }
    const auto& allowed = reinterpret_cast<const ACCESS_ALLOWED_ACE&>(entry);
    // The account begins at this member, which the functions do not change.
    auto* const account = const_cast<DWORD*>(&allowed.SidStart);
    return (allowed.Mask & kWriting) != 0 && !may_write_anyhow(account);
}

bool others_can_write(ACL* rights) {
    if (rights == nullptr) {
        return true;  // everybody has all rights
    }
    for (DWORD i = 0; i < rights->AceCount; ++i) {
        void* entry = nullptr;
        if (GetAce(rights, i, &entry) == 0 || lets_others_write(*static_cast<ACE_HEADER*>(entry))) {
            return true;
        }
    }
    return false;
}

// Why others may have written the file, or nothing.
std::optional<std::string> reason_against_trusting(HANDLE file) {
    PSID owner = nullptr;
    ACL* rights = nullptr;
    PSECURITY_DESCRIPTOR read = nullptr;
    const DWORD error = GetSecurityInfo(file, SE_FILE_OBJECT,
                                        OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                                        &owner, nullptr, &rights, nullptr, &read);
    if (error != ERROR_SUCCESS) {
        return system_reason(error);
    }
    const Local<void> owned(read);
    if (!user().is(owner)) {
        return "It belongs to another user";
    }
    if (others_can_write(rights)) {
        return "Others can write to it";
    }
    return std::nullopt;
}

std::optional<std::string> reason_against_kind(HANDLE file, BY_HANDLE_FILE_INFORMATION& found) {
    if (GetFileType(file) != FILE_TYPE_DISK) {
        return "Not a regular file";
    }
    FILE_ATTRIBUTE_TAG_INFO kind{};
    if (GetFileInformationByHandle(file, &found) == 0 ||
        GetFileInformationByHandleEx(file, FileAttributeTagInfo, &kind, sizeof(kind)) == 0) {
        return system_reason();
    }
    if ((kind.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        return kind.ReparseTag == IO_REPARSE_TAG_SYMLINK ? "It is a symbolic link"
                                                         : "Not a regular file";
    }
    if ((kind.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return "Not a regular file";
    }
    return std::nullopt;
}

// Programs of ours mark a file that they have open by a lock far after its end, so that all others
// can read it.
OVERLAPPED place_of_the_mark() {
    OVERLAPPED place{};
    place.OffsetHigh = std::numeric_limits<std::int32_t>::max();
    return place;
}

// False if another program holds a lock against it. Where the system has no locks there is none.
bool can_lock(HANDLE file, DWORD kind) {
    OVERLAPPED place = place_of_the_mark();
    return LockFileEx(file, kind | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) != 0 ||
           (GetLastError() != ERROR_LOCK_VIOLATION && GetLastError() != ERROR_IO_PENDING);
}

}  // namespace

std::optional<std::string> PrivateFile::create(const std::string& name) {
    close();
    const std::wstring wide = wide_name(name);
    PrivateSecurity security(L"");
    if (security.attributes() == nullptr) {
        return system_reason();
    }
    HANDLE file = CreateFileW(wide.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                              security.attributes(), CREATE_NEW,
                              FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return system_reason();
    }
    held_ = held(file);
    // A file system without access rights lets others write to it; no undo would read it.
    if (auto reason = reason_against_trusting(file)) {
        close();
        DeleteFileW(wide.c_str());
        return reason;
    }
    static_cast<void>(can_lock(file, LOCKFILE_EXCLUSIVE_LOCK));
    size_ = 0;
    return std::nullopt;
}

std::optional<std::string> PrivateFile::open(const std::string& name) {
    close();
    HANDLE file =
        CreateFileW(wide_name(name).c_str(), GENERIC_READ,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                    FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return system_reason();
    }
    held_ = held(file);
    BY_HANDLE_FILE_INFORMATION found{};
    auto reason = reason_against_kind(file, found);
    if (!reason) {
        reason = reason_against_trusting(file);
    }
    if (reason) {
        close();
        return reason;
    }
    is_being_written_ = !can_lock(file, 0);
    size_ = joined(found.nFileSizeHigh, found.nFileSizeLow);
    modified_ = seconds_since_1970(found.ftLastWriteTime);
    return std::nullopt;
}

void PrivateFile::close() {
    if (is_open()) {
        CloseHandle(handle_of(std::exchange(held_, kNone)));
    }
}

std::optional<std::string> PrivateFile::append(std::span<const std::uint8_t> bytes) const {
    return write_all(handle_of(held_), bytes) ? std::nullopt : std::optional(system_reason());
}

std::optional<std::string> PrivateFile::flush() const {
    return FlushFileBuffers(handle_of(held_)) != 0 ? std::nullopt : std::optional(system_reason());
}

std::vector<std::uint8_t> PrivateFile::read(std::int64_t offset, std::size_t count) const {
    std::vector<std::uint8_t> bytes(count);
    std::size_t filled = 0;
    while (filled < count) {
        ULARGE_INTEGER position{};
        position.QuadPart = static_cast<std::uint64_t>(offset) + filled;
        OVERLAPPED place{};
        place.Offset = position.LowPart;
        place.OffsetHigh = position.HighPart;
        DWORD done = 0;
        if (ReadFile(handle_of(held_), bytes.data() + filled, static_cast<DWORD>(count - filled),
                     &done, &place) == 0 ||
            done == 0) {
            break;
        }
        filled += done;
    }
    bytes.resize(filled);
    return bytes;
}

bool PrivateFile::is_in_use() const {
    OVERLAPPED place = place_of_the_mark();
    // Its own shared lock would be in the way.
    UnlockFileEx(handle_of(held_), 0, 1, 0, &place);
    return !can_lock(handle_of(held_), LOCKFILE_EXCLUSIVE_LOCK);
}

// The flush of a file includes its name.
std::optional<std::string> flush_name(const std::string& /*name*/) {
    return std::nullopt;
}

std::optional<std::string> make_private_folder(const std::string& name) {
    const std::filesystem::path path = path_of(name);
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        return std::nullopt;
    }
    const std::string above = name_of(path.parent_path());
    if (!above.empty() && above != name) {
        if (auto reason = make_private_folder(above)) {
            return reason;
        }
    }
    PrivateSecurity security(L"OICI");
    if (security.attributes() == nullptr) {
        return system_reason();
    }
    const bool is_made = CreateDirectoryW(wide_name(name).c_str(), security.attributes()) != 0;
    return is_made || GetLastError() == ERROR_ALREADY_EXISTS ? std::nullopt
                                                             : std::optional(system_reason());
}

}  // namespace brindle::host
