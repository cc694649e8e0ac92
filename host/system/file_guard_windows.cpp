#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>

#include "system/file_guard.h"
#include "system/interruption.h"
#include "system/windows_handle.h"

namespace brindle::host {

namespace {

constexpr int kMaxWaits = 100;
constexpr DWORD kWaitMilliseconds = 100;

// The name of the mutex is made of the file's volume and number, not of its path.
std::wstring mutex_name(const BY_HANDLE_FILE_INFORMATION& file) {
    wchar_t name[64];
    (void)std::swprintf(name, std::size(name), L"Local\\brindle-%08lx-%08lx%08lx",
                        static_cast<unsigned long>(file.dwVolumeSerialNumber),
                        static_cast<unsigned long>(file.nFileIndexHigh),
                        static_cast<unsigned long>(file.nFileIndexLow));
    return name;
}

std::optional<std::wstring> mutex_name(const std::string& name) {
    const WindowsHandle file(name, FILE_READ_ATTRIBUTES);
    BY_HANDLE_FILE_INFORMATION found{};
    if (!file.is_open() || GetFileInformationByHandle(file.get(), &found) == 0) {
        return std::nullopt;
    }
    return mutex_name(found);
}

}  // namespace

std::optional<std::string> FileLock::acquire(const std::string& name) {
    release();
    for (int waits = 0; waits < kMaxWaits && !is_interrupted();) {
        const std::optional<std::wstring> locked = mutex_name(name);
        if (!locked) {
            return std::nullopt;  // the reading that follows tells why
        }
        auto* const mutex = CreateMutexW(nullptr, FALSE, locked->c_str());
        if (mutex == nullptr) {
            return std::nullopt;
        }
        const DWORD outcome = WaitForSingleObject(mutex, kWaitMilliseconds);
        if (outcome == WAIT_OBJECT_0 || outcome == WAIT_ABANDONED) {
            held_ = reinterpret_cast<std::intptr_t>(mutex);
            if (mutex_name(name) == locked) {
                return std::nullopt;
            }
            release();  // a save that was waited for has put another file under the name
            continue;
        }
        CloseHandle(mutex);
        ++waits;
    }
    return "Permission denied: another program is changing it";
}

void FileLock::release() {
    if (held_ != kNone) {
        // One type for what all systems lock with.
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        auto* const mutex = reinterpret_cast<HANDLE>(std::exchange(held_, kNone));
        ReleaseMutex(mutex);
        CloseHandle(mutex);
    }
}

// A program that writes without sharing keeps this one from opening the file at all.
std::optional<std::string> WriteLease::acquire(const std::string& /*name*/) {
    return std::nullopt;
}

std::optional<std::string> WriteLease::check() const {
    return std::nullopt;
}

void WriteLease::release() {}

}  // namespace brindle::host
