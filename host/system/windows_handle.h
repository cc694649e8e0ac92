// An open file of Windows, under its name in UTF-8.
#pragma once

#include <string>
#include <windows.h>

#include <brindle/text.h>

namespace brindle::host {

[[nodiscard]] inline std::wstring wide_name(const std::string& name) {
    const String text = from_utf8(name);
    return {text.begin(), text.end()};
}

class WindowsHandle {
public:
    WindowsHandle(const std::string& name, DWORD access)
        : handle_(CreateFileW(wide_name(name).c_str(), access,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr)) {}
    ~WindowsHandle() {
        if (is_open()) {
            CloseHandle(handle_);
        }
    }
    WindowsHandle(const WindowsHandle&) = delete;
    WindowsHandle& operator=(const WindowsHandle&) = delete;

    [[nodiscard]] bool is_open() const { return handle_ != INVALID_HANDLE_VALUE; }
    [[nodiscard]] HANDLE get() const { return handle_; }

private:
    HANDLE handle_;
};

}  // namespace brindle::host
