// What the commands have in common on the command line.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "system/exit_status.h"

namespace brindle::host {

// The command that the command line asks for, ready to run.
using Command = std::function<ExitStatus()>;

// How a command puts itself on the command line, and into `chosen` when it is called.
using AddCommand = void (*)(CLI::App& program, Command& chosen);

// A command with --help, which ends with an example, and --version.
CLI::App* add_command(CLI::App& program, const std::string& name, const std::string& description,
                      const std::string& example);

// The operands of a command, at least one, each taken letter for letter. After `--` they may begin
// with "-".
void add_operands(CLI::App& command, const std::string& name, std::vector<std::string>& values,
                  const std::string& description);

// Reads the command line and runs its command. --help and --version, and errors of usage, are
// answered here.
[[nodiscard]] ExitStatus run_command_line(std::vector<std::string> arguments,
                                          const std::vector<AddCommand>& commands);

}  // namespace brindle::host
