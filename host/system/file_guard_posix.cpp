#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include <sys/file.h>
#include <sys/stat.h>

#include "system/file_guard.h"
#include "system/interruption.h"

namespace brindle::host {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kMaxWait = std::chrono::seconds(10);
constexpr auto kPause = std::chrono::milliseconds(10);

// The save that held the lock may have replaced the file.
bool stands_for(const std::string& name, int file) {
    struct stat named {};
    struct stat held {};
    return stat(name.c_str(), &named) == 0 && fstat(file, &held) == 0 &&
           named.st_dev == held.st_dev && named.st_ino == held.st_ino;
}

#ifdef F_SETLEASE

const std::string kOpenElsewhere = "Permission denied: open for writing elsewhere";

// The system sends SIGIO when another program waits for the file. It would end this one; check()
// queries the lease instead.
void ignore_lease_signals() {
    static const bool is_ignored = std::signal(SIGIO, SIG_IGN) != SIG_ERR;
    static_cast<void>(is_ignored);
}

#endif

}  // namespace

std::optional<std::string> FileLock::acquire(const std::string& name) {
    release();
    const Clock::time_point end = Clock::now() + kMaxWait;
    for (;;) {
        const int file = open(name.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        if (file == -1) {
            return std::nullopt;  // the reading that follows tells why
        }
        if (flock(file, LOCK_EX | LOCK_NB) == 0) {
            if (stands_for(name, file)) {
                held_ = file;
                return std::nullopt;
            }
            close(file);
            continue;
        }
        const int error = errno;
        close(file);
        if (error != EWOULDBLOCK && error != EINTR) {
            return std::nullopt;  // no locks on this file system
        }
        if (is_interrupted() || Clock::now() >= end) {
            return "Permission denied: another program is changing it";
        }
        std::this_thread::sleep_for(kPause);
    }
}

void FileLock::release() {
    if (held_ != kNone) {
        close(static_cast<int>(std::exchange(held_, kNone)));
    }
}

std::optional<std::string> WriteLease::acquire(const std::string& name) {
    release();
#ifdef F_SETLEASE
    ignore_lease_signals();
    const int file = open(name.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (file == -1) {
        return std::nullopt;  // the reading that follows tells why
    }
    if (fcntl(file, F_SETLEASE, F_RDLCK) == 0) {
        descriptor_ = file;
        return std::nullopt;
    }
    const int error = errno;
    close(file);
    if (error == EAGAIN) {
        return kOpenElsewhere;
    }
#else
    static_cast<void>(name);
#endif
    return std::nullopt;
}

std::optional<std::string> WriteLease::check() const {
#ifdef F_SETLEASE
    if (descriptor_ != kNone && fcntl(descriptor_, F_GETLEASE) != F_RDLCK) {
        return kOpenElsewhere;
    }
#endif
    return std::nullopt;
}

void WriteLease::release() {
    if (descriptor_ != kNone) {
        close(std::exchange(descriptor_, kNone));
    }
}

}  // namespace brindle::host
