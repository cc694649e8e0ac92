#include "standard_streams.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include "printable_text.h"

namespace brindle::host {

void prepare_standard_streams() {
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    // A file that may not grow any more is a full disk to us, not the end.
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (fcntl(stream, F_GETFD) == -1 && errno == EBADF) {
            // The lowest free number is given out, which is this one. Opened for the wrong
            // direction, so that using the stream still fails.
            const int opened = open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
            static_cast<void>(opened);
        }
    }
}

void write_output(std::string_view text) {
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() ||
        std::fflush(stdout) != 0) {
        throw OutputFailure{errno};
    }
}

void close_output() {
    errno = 0;
    if (std::fclose(stdout) != 0) {
        throw OutputFailure{errno};
    }
}

void write_note(std::string_view lines) {
    // Nobody is left to be told that this failed.
    static_cast<void>(std::fwrite(lines.data(), 1, lines.size(), stderr));
}

void write_error(std::string_view what) {
    write_note("brindle: " + printable(what) + "\n");
}

void write_error(std::string_view file_name, std::string_view reason) {
    write_error(std::string(file_name) + ": " + std::string(reason));
}

}  // namespace brindle::host
