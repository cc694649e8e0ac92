// Keeps other programs from a file while this one changes it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <brindle/save_options.h>

namespace brindle::host {

// One program of ours at a time changes a file: from its reading to the last write it is locked.
// Where the system has no locks for it, nothing is locked.
class FileLock {
public:
    FileLock() = default;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock() { release(); }

    // Locks the file with this name, which may be replaced while another program holds
    // it. Waits for ten seconds at most, and no longer after a signal to end. The answer is why it
    // is not locked, or nothing.
    [[nodiscard]] std::optional<std::string> acquire(const std::string& name);
    void release();

private:
    // A descriptor, or a handle of the system; what is none differs.
    static constexpr std::intptr_t kNone = -1;
    std::intptr_t held_ = kNone;
};

// The system's guarantee that no other program has a file open for writing, such as a program that
// is still recording into it. Linux gives it; elsewhere, and on file systems that do not, nothing
// is known.
class WriteLease {
public:
    WriteLease() = default;
    WriteLease(const WriteLease&) = delete;
    WriteLease& operator=(const WriteLease&) = delete;
    ~WriteLease() { release(); }

    // The answer is why the file must not be changed, or nothing.
    [[nodiscard]] std::optional<std::string> acquire(const std::string& name);
    // The same, later: another program may be waiting to open the file for writing.
    [[nodiscard]] std::optional<std::string> check() const;
    // Before this program opens the file for writing itself.
    void release();

private:
    static constexpr int kNone = -1;
    int descriptor_ = kNone;
};

// Keeps others from a file while this program changes it.
class FileGuard {
public:
    // To be called before the file is read. The answer is why it must not be changed, or nothing.
    [[nodiscard]] std::optional<std::string> acquire(const std::string& name) {
        if (auto reason = lock_.acquire(name)) {
            return reason;
        }
        return lease_.acquire(name);
    }

    // For saves and strips. The guard must outlive them.
    [[nodiscard]] SaveOptions save_options(bool atomic = false);

private:
    void before_change(SaveWay way);

    FileLock lock_;
    WriteLease lease_;
};

}  // namespace brindle::host
