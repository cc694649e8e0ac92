#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>

#include "system/created_file.h"
#include "system/windows_handle.h"

namespace brindle::host {

namespace {

bool write_all(HANDLE file, std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kMaxBlock = std::numeric_limits<std::int32_t>::max();
    while (!bytes.empty()) {
        DWORD count = 0;
        const auto wanted = static_cast<DWORD>(std::min(bytes.size(), kMaxBlock));
        if (WriteFile(file, bytes.data(), wanted, &count, nullptr) == 0 || count == 0) {
            return false;
        }
        bytes = bytes.subspan(count);
    }
    return true;
}

}  // namespace

std::optional<std::string> write_new_file(const std::string& name,
                                          std::span<const std::uint8_t> bytes,
                                          const FileState& /*like*/) {
    const std::wstring wide = wide_name(name);
    HANDLE file = CreateFileW(wide.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        return error == ERROR_FILE_EXISTS ? std::generic_category().message(EEXIST)
                                          : "Windows error " + std::to_string(error);
    }
    const bool is_written = write_all(file, bytes) && FlushFileBuffers(file) != 0;
    const DWORD error = GetLastError();
    CloseHandle(file);
    if (!is_written) {
        DeleteFileW(wide.c_str());
        return "Windows error " + std::to_string(error);
    }
    return std::nullopt;
}

}  // namespace brindle::host
