// Calls of Windows that several files make.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <windows.h>

namespace brindle::host {

// In the words that other systems have for it, so that scripts know them everywhere.
[[nodiscard]] std::string system_reason(DWORD error);
// What GetLastError() says.
[[nodiscard]] std::string system_reason();

// False if the system does not take all bytes; GetLastError() tells why.
[[nodiscard]] bool write_all(HANDLE file, std::span<const std::uint8_t> bytes);

// A number that Windows gives in two halves.
[[nodiscard]] std::int64_t joined(DWORD high, DWORD low);
// Units of 100 ns since 1601.
[[nodiscard]] std::int64_t ticks(const FILETIME& time);
[[nodiscard]] std::int64_t seconds_since_1970(const FILETIME& time);

}  // namespace brindle::host
