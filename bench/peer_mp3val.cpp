#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <sys/wait.h>

#include "peers.h"

namespace brindle::bench::mp3val {

void walk(const std::string& path) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    char program[] = "mp3val";
    std::string file = path;
    char* arguments[] = {program, file.data(), nullptr};
    pid_t child = 0;
    int status = 0;
    if (::posix_spawnp(&child, program, &actions, nullptr, arguments, environ) != 0 ||
        ::waitpid(child, &status, 0) != child || status != 0) {
        std::perror("mp3val");
        std::abort();
    }
    posix_spawn_file_actions_destroy(&actions);
}

}  // namespace brindle::bench::mp3val
