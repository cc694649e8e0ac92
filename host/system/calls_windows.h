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

}  // namespace brindle::host
