#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

#include "peers.h"

namespace brindle::bench::mutagen {
namespace {

// The Python program that does the jobs; requests and answers go through a pipe each.
class Interpreter {
public:
    Interpreter() {
        int to_child[2];
        int from_child[2];
        if (::pipe2(to_child, O_CLOEXEC) != 0 || ::pipe2(from_child, O_CLOEXEC) != 0) {
            std::abort();
        }
        if (::fork() == 0) {
            ::dup2(to_child[0], STDIN_FILENO);
            ::dup2(from_child[1], STDOUT_FILENO);
            ::execl("/usr/bin/python3", "python3", BRINDLE_MUTAGEN_PROGRAM, nullptr);
            std::_Exit(1);
        }
        ::close(to_child[0]);
        ::close(from_child[1]);
        to_ = to_child[1];
        from_ = from_child[0];
    }
    Interpreter(const Interpreter&) = delete;
    Interpreter& operator=(const Interpreter&) = delete;
    ~Interpreter() {
        ::close(to_);
        ::close(from_);
    }

    void run(const std::string& job, const std::string& path) const {
        const std::string line = job + " " + path + "\n";
        char done = 0;
        if (::write(to_, line.data(), line.size()) != static_cast<ssize_t>(line.size()) ||
            ::read(from_, &done, 1) != 1) {
            std::perror("mutagen");
            std::abort();
        }
    }

private:
    int to_ = -1;
    int from_ = -1;
};

void run(const char* job, const std::string& path) {
    static const Interpreter interpreter;
    interpreter.run(job, path);
}

}  // namespace

void open(const std::string& path) {
    run("open", path);
}

void save(const std::string& path) {
    run("save", path);
}

void grow(const std::string& path) {
    run("grow", path);
}

}  // namespace brindle::bench::mutagen
