#include "process.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <sys/wait.h>

namespace brindle::bench {

void run_program(std::vector<std::string> arguments) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    pid_t child = 0;
    int status = 0;
    if (::posix_spawnp(&child, pointers.front(), &actions, nullptr, pointers.data(), environ) !=
            0 ||
        ::waitpid(child, &status, 0) != child || status != 0) {
        std::perror(arguments.front().c_str());
        std::abort();
    }
    posix_spawn_file_actions_destroy(&actions);
}

}  // namespace brindle::bench
