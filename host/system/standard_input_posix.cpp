#include <cerrno>
#include <poll.h>
#include <system_error>
#include <unistd.h>

#include "system/interruption.h"
#include "system/standard_input.h"

namespace brindle::host {

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
