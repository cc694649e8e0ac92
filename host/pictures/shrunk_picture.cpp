#include "pictures/shrunk_picture.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <sys/wait.h>

#include "pictures/image.h"
#include "pictures/picture_process.h"
#include "system/posix_calls.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): not all systems declare it

namespace brindle::host {

namespace {

using Bytes = std::vector<std::uint8_t>;

void require(int error) {
    if (error != 0) {
        throw PictureError("The process that shrinks pictures could not be started: " +
                           std::generic_category().message(error));
    }
}

class Descriptor {
public:
    explicit Descriptor(int held) : held_(held) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    [[nodiscard]] int get() const { return held_; }
    void close() {
        if (held_ != kNone) {
            ::close(std::exchange(held_, kNone));
        }
    }

private:
    static constexpr int kNone = -1;
    int held_;
};

struct Pipe {
    Pipe() : Pipe(made()) {}

    Descriptor out;
    Descriptor in;

private:
    explicit Pipe(const std::array<int, 2>& ends) : out(ends[0]), in(ends[1]) {}
    static std::array<int, 2> made() {
        std::array<int, 2> ends{};
        require(pipe2(ends.data(), O_CLOEXEC) == 0 ? 0 : errno);
        return ends;
    }
};

// The running program once more. A fork of a program with threads could not decode anything: it
// would have the locks of threads that it does not have.
class PictureProcess {
public:
    explicit PictureProcess(std::size_t max_bytes) {
        std::string option = kShrinkPicture;
        std::string count = std::to_string(max_bytes);
        std::string name = "brindle";
        const std::array<char*, 4> arguments{name.data(), option.data(), count.data(), nullptr};
        posix_spawn_file_actions_t actions;
        require(posix_spawn_file_actions_init(&actions));
        posix_spawn_file_actions_adddup2(&actions, input_.out.get(), STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, output_.in.get(), STDOUT_FILENO);
        const int error =
            posix_spawn(&id_, "/proc/self/exe", &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        require(error);
        input_.out.close();
        output_.in.close();
    }

    // Ends early if the process does. It writes nothing before it has read all.
    void write(std::span<const std::uint8_t> bytes) {
        static_cast<void>(write_all(input_.in.get(), bytes));
        input_.in.close();
    }

    // All output, or the first bytes up to that number.
    Bytes read(std::size_t max_bytes) {
        Bytes bytes(max_bytes);
        std::size_t size = 0;
        while (size < max_bytes) {
            const ssize_t count = ::read(output_.out.get(), bytes.data() + size, max_bytes - size);
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                break;
            }
            size += static_cast<std::size_t>(count);
        }
        bytes.resize(size);
        output_.out.close();
        return bytes;
    }

    // How it has ended, as waitpid() reports it.
    int wait() const {
        int status = 0;
        while (waitpid(id_, &status, 0) == -1) {
            if (errno != EINTR) {
                throw PictureError("The process that shrinks pictures was lost");
            }
        }
        return status;
    }

private:
    Pipe input_;
    Pipe output_;
    pid_t id_ = 0;
};

std::string signal_text(int signal) {
    if (signal == SIGXCPU) {
        return "it took more than " + std::to_string(kMaxPictureSeconds) +
               " seconds of processor time";
    }
    return "signal " + std::to_string(signal);
}

}  // namespace

std::optional<std::string> reason_against_shrinking() {
    return std::nullopt;
}

ShrunkPicture shrink_picture(std::span<const std::uint8_t> image, std::size_t max_bytes) {
    PictureProcess process(max_bytes);
    process.write(image);
    Bytes output = process.read(max_bytes + 1);
    const int status = process.wait();
    if (WIFSIGNALED(status)) {
        throw PictureError("The process that shrinks pictures has died: " +
                           signal_text(WTERMSIG(status)));
    }
    if (WEXITSTATUS(status) == kImageRefused) {
        return {{}, std::string(output.begin(), output.end())};
    }
    if (WEXITSTATUS(status) != EXIT_SUCCESS || output.empty() || output.size() > max_bytes) {
        throw PictureError("The process that shrinks pictures has failed");
    }
    return {std::move(output), {}};
}

}  // namespace brindle::host
