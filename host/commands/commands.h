// The commands of the program. Each has a file of its own.
#pragma once

#include "commands/command_line.h"

namespace brindle::host {

void add_show(CommandLine& program);
void add_set(CommandLine& program);
void add_strip(CommandLine& program);
void add_scan(CommandLine& program);
void add_check(CommandLine& program);
void add_listen(CommandLine& program);
void add_time(CommandLine& program);
void add_genres(CommandLine& program);

}  // namespace brindle::host
