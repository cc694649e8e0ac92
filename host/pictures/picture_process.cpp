#include "pictures/picture_process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <string_view>
#include <unistd.h>

#include <sys/resource.h>

#include "pictures/image.h"
#include "pictures/shrink_image.h"
#include "pictures/shrunk_picture.h"
#include "system/posix_calls.h"

namespace brindle::host {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr rlim_t kMaxMemory = rlim_t{1024} * 1024 * 1024;

// The address space that the process had when it started.
rlim_t used_address_space() {
    std::array<char, 64> text{};
    const int file = open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    const ssize_t count = file == -1 ? 0 : read(file, text.data(), text.size());
    close(file);
    rlim_t pages = 0;
    std::from_chars(text.data(), text.data() + std::max(count, ssize_t{0}), pages);
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

template <class Resource>
void limit(Resource resource, rlim_t soft, rlim_t hard) {
    rlimit held{};
    if (getrlimit(resource, &held) == 0) {
        held.rlim_max = std::min(held.rlim_max, hard);
        held.rlim_cur = std::min({held.rlim_cur, held.rlim_max, soft});
        if (setrlimit(resource, &held) != 0) {
            refuse_image("the limits of its process could not be set");
        }
    }
}

void limit_process() {
    const rlim_t memory = used_address_space() + kMaxMemory;
    limit(RLIMIT_AS, memory, memory);
    limit(RLIMIT_CPU, kMaxPictureSeconds, kMaxPictureSeconds + 1);
    limit(RLIMIT_FSIZE, 0, 0);
    limit(RLIMIT_CORE, 0, 0);
    std::set_new_handler([] { refuse_image("it needs too much memory"); });
}

Bytes read_input() {
    constexpr std::size_t kBlock = std::size_t{64} * 1024;
    Bytes bytes;
    for (;;) {
        const std::size_t size = bytes.size();
        bytes.resize(size + kBlock);
        const ssize_t count = read(STDIN_FILENO, bytes.data() + size, kBlock);
        bytes.resize(size + static_cast<std::size_t>(std::max(count, ssize_t{0})));
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return bytes;
        }
    }
}

}  // namespace

void refuse_image(std::string_view reason) {
    const ssize_t done = write(STDOUT_FILENO, reason.data(), reason.size());
    static_cast<void>(done);
    _exit(kImageRefused);
}

std::optional<int> run_picture_process(const std::vector<std::string>& arguments) {
    if (arguments.size() != 2 || arguments.front() != kShrinkPicture) {
        return std::nullopt;
    }
    const std::string& count = arguments.back();
    std::size_t max_bytes = 0;
    std::from_chars(count.data(), count.data() + count.size(), max_bytes);
    // An interrupted program finishes the file that it has begun.
    for (const int signal : {SIGINT, SIGQUIT, SIGHUP}) {
        static_cast<void>(std::signal(signal, SIG_IGN));
    }
    limit_process();
    return write_all(STDOUT_FILENO, shrunk_image(read_input(), max_bytes)) ? EXIT_SUCCESS
                                                                           : EXIT_FAILURE;
}

}  // namespace brindle::host
