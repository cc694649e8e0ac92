#include <cerrno>
#include <csignal>
#include <fcntl.h>
#ifdef __GLIBC__
#include <malloc.h>
#endif
#include <poll.h>
#include <system_error>
#include <unistd.h>

#include "system/interruption.h"
#include "system/process.h"

namespace brindle::host {

std::vector<std::string> program_arguments(int argc, char** argv) {
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

void keep_freed_memory() {
#ifdef __GLIBC__
    constexpr int kMaxKept = 1024 * 1024;  // for each of the few areas that threads share
    static_cast<void>(mallopt(M_TRIM_THRESHOLD, kMaxKept));
    static_cast<void>(mallopt(M_MMAP_THRESHOLD, kMaxKept));
#endif
}

void prepare_standard_streams() {
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    // Reaching a file size limit is an error like a full disk, not a signal.
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (fcntl(stream, F_GETFD) == -1 && errno == EBADF) {
            // open() returns the lowest free number, which is this one. Opened for the wrong
            // direction, so that using the stream still fails.
            const int opened = open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
            static_cast<void>(opened);
        }
    }
}

namespace {

// False when the program is interrupted before anything has come.
bool wait_for_input() {
    constexpr int kLookAgainMs = 100;
    pollfd input{STDIN_FILENO, POLLIN, 0};
    int ready = 0;
    while (ready == 0 || (ready == -1 && errno == EINTR)) {
        if (is_interrupted()) {
            return false;
        }
        ready = poll(&input, 1, kLookAgainMs);
    }
    return true;
}

}  // namespace

std::optional<std::string> read_input(std::string& block, std::size_t count) {
    block.clear();
    if (!wait_for_input()) {
        return std::nullopt;
    }
    block.resize(count);
    const ssize_t done = read(STDIN_FILENO, block.data(), block.size());
    block.resize(done > 0 ? static_cast<std::size_t>(done) : 0);
    if (done < 0) {
        return std::generic_category().message(errno);
    }
    return std::nullopt;
}

}  // namespace brindle::host
