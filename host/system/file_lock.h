#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace brindle::host {

// One program of ours at a time changes a file: from its reading to the last write it is locked.
// Where the system has no locks for it, nothing is locked.
class FileLock {
public:
    FileLock() = default;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock() { release(); }

    // Locks the file that the name stands for, which may be replaced while another program holds
    // it. Waits for ten seconds at most, and no longer after a signal to end. The answer is why it
    // is not locked, or nothing.
    [[nodiscard]] std::optional<std::string> acquire(const std::string& name);
    void release();

private:
    // A descriptor, or a handle of the system; what is none differs.
    static constexpr std::intptr_t kNone = -1;
    std::intptr_t held_ = kNone;
};

}  // namespace brindle::host
