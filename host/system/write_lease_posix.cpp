#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include "system/write_lease.h"

namespace brindle::host {

namespace {

#ifdef F_SETLEASE

const std::string kOpenElsewhere = "Permission denied: open for writing elsewhere";

// By which the system tells that somebody waits. It would end the program; check() asks instead.
void ignore_lease_signals() {
    static const bool is_ignored = std::signal(SIGIO, SIG_IGN) != SIG_ERR;
    static_cast<void>(is_ignored);
}

#endif

}  // namespace

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
