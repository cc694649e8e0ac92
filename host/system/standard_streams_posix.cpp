#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#include "output/standard_streams.h"

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

}  // namespace brindle::host
