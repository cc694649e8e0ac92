#include "system/calls_windows.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace brindle::host {

std::string system_reason(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
            return std::generic_category().message(ENOENT);
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
            return std::generic_category().message(EACCES);
        case ERROR_ALREADY_EXISTS:
        case ERROR_FILE_EXISTS:
            return std::generic_category().message(EEXIST);
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return std::generic_category().message(ENOSPC);
        default:
            return "Windows error " + std::to_string(error);
    }
}

std::string system_reason() {
    return system_reason(GetLastError());
}

bool write_all(HANDLE file, std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kMaxWrite = std::size_t{1} << 30U;
    while (!bytes.empty()) {
        DWORD count = 0;
        const auto wanted = static_cast<DWORD>(std::min(bytes.size(), kMaxWrite));
        if (WriteFile(file, bytes.data(), wanted, &count, nullptr) == 0 || count == 0) {
            return false;
        }
        bytes = bytes.subspan(count);
    }
    return true;
}

std::int64_t joined(DWORD high, DWORD low) {
    ULARGE_INTEGER number{};
    number.HighPart = high;
    number.LowPart = low;
    return static_cast<std::int64_t>(number.QuadPart);
}

std::int64_t ticks(const FILETIME& time) {
    return joined(time.dwHighDateTime, time.dwLowDateTime);
}

std::int64_t seconds_since_1970(const FILETIME& time) {
    constexpr std::int64_t kTicksPerSecond = 10'000'000;
    constexpr std::int64_t kFrom1601To1970 = 11'644'473'600;  // in seconds
    return ticks(time) / kTicksPerSecond - kFrom1601To1970;
}

}  // namespace brindle::host
