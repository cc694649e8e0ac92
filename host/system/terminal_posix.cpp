#include <cstdlib>
#include <string_view>
#include <unistd.h>

#include <sys/ioctl.h>

#include "system/terminal.h"

namespace brindle::host {

namespace {

// Read before any thread is started, and never written.
std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

}  // namespace

bool is_terminal(Stream stream) {
    const int descriptor = stream == Stream::Output ? STDOUT_FILENO : STDERR_FILENO;
    return isatty(descriptor) == 1 && environment("TERM") != "dumb";
}

bool can_ask() {
    return isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1;
}

bool wants_colours(Stream stream) {
    return is_terminal(stream) && environment("NO_COLOR").empty();
}

int terminal_columns() {
    constexpr int kUsual = 80;
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return kUsual;
    }
    return size.ws_col;
}

}  // namespace brindle::host
