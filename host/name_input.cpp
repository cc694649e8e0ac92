#include "name_input.h"

#include <cerrno>
#include <poll.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "interruption.h"

namespace brindle::host {

namespace {

constexpr std::size_t kBlock = std::size_t{64} * 1024;
// No system has names as long as this. What is longer is no list of names, and is not gathered.
constexpr std::size_t kLongestName = kBlock;

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

bool NameInput::is_separator(char c) const {
    // A name never holds a NUL.
    return c == '\0' || (c == '\n' && !by_nulls_);
}

std::optional<FoundName> NameInput::next() {
    while (position_ < block_.size() || fill()) {
        const char c = block_[position_];
        ++position_;
        if (!is_separator(c)) {
            if (name_.size() < kLongestName) {
                name_.push_back(c);
            }
        } else if (!name_.empty()) {
            return FoundName{std::exchange(name_, {})};
        }
    }
    if (!name_.empty() && !is_interrupted()) {
        return FoundName{std::exchange(name_, {})};
    }
    if (failure_) {
        return FoundName{"standard input", std::exchange(failure_, std::nullopt)};
    }
    return std::nullopt;
}

bool NameInput::fill() {
    if (has_failed_ || !wait_for_input()) {
        return false;
    }
    block_.resize(kBlock);
    position_ = 0;
    const ssize_t count = read(STDIN_FILENO, block_.data(), block_.size());
    block_.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    if (count < 0) {
        has_failed_ = true;
        failure_ = std::generic_category().message(errno);
    }
    if (is_first_ && count > 0) {
        by_nulls_ = by_nulls_ || block_.find('\0') != std::string::npos;
        is_first_ = false;
    }
    return count > 0;
}

}  // namespace brindle::host
