// Calls of POSIX systems that several files make.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace brindle::host {

// What errno says.
[[nodiscard]] std::string system_reason();

// False if the system does not take all bytes; errno tells why.
[[nodiscard]] bool write_all(int descriptor, std::span<const std::uint8_t> bytes);

// Waits until the device has the names in the folder; "" is the current one. The answer is why it
// has not, or nothing.
[[nodiscard]] std::optional<std::string> flush_folder(const std::string& name);

}  // namespace brindle::host
