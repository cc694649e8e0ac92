#include "system/calls_windows.h"
#include "system/created_file.h"
#include "system/windows_handle.h"

namespace brindle::host {

std::optional<std::string> write_new_file(const std::string& name,
                                          std::span<const std::uint8_t> bytes,
                                          const FileState& /*like*/) {
    const std::wstring wide = wide_name(name);
    HANDLE file = CreateFileW(wide.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return system_reason();
    }
    const bool is_written = write_all(file, bytes) && FlushFileBuffers(file) != 0;
    const DWORD error = GetLastError();
    CloseHandle(file);
    if (!is_written) {
        DeleteFileW(wide.c_str());
        return system_reason(error);
    }
    return std::nullopt;
}

std::optional<std::string> remove_file(const std::string& name) {
    return DeleteFileW(wide_name(name).c_str()) != 0 ? std::nullopt
                                                     : std::optional(system_reason());
}

}  // namespace brindle::host
