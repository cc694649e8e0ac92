// The commands of the program. Each has a file of its own.
#pragma once

#include "commands/command_line.h"

namespace brindle::host {

void add_show(CLI::App& program, Command& chosen);
void add_set(CLI::App& program, Command& chosen);
void add_strip(CLI::App& program, Command& chosen);
void add_scan(CLI::App& program, Command& chosen);
void add_check(CLI::App& program, Command& chosen);
void add_listen(CLI::App& program, Command& chosen);
void add_time(CLI::App& program, Command& chosen);
void add_genres(CLI::App& program, Command& chosen);

}  // namespace brindle::host
