// What the commands have in common on the command line.
#pragma once

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "batch/batch.h"
#include "batch/file_batch.h"
#include "cache/cached_batch.h"
#include "journal/journal.h"
#include "system/exit_status.h"

// A source that includes CLI11 takes twelve seconds to compile, so command_line.cpp alone does.
namespace CLI {
class App;
}

namespace brindle::host {

// Asks before files in folders are changed, if there are any, and tells when that is refused.
// Raises UsageError when it would take --yes.
[[nodiscard]] bool may_change_files(const ChangeOptions& options);

// Does each file, with its entry in the journal before, if that may be.
[[nodiscard]] ExitStatus change_files(const ChangeOptions& options, const PlanStep& plan,
                                      Journal& journal);

// The command that the command line asks for, ready to run.
using Command = std::function<ExitStatus()>;

// The command line asks for something that cannot be done.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The words of an option whose value is a list, with commas between them. Raises UsageError.
[[nodiscard]] std::vector<std::string> words_in(const std::string& option, const std::string& list);

// The options and operands of one command. What is passed by reference is assigned while the
// command line is read, and must live until the command has run.
class CommandOptions {
public:
    explicit CommandOptions(CLI::App& app) : app_(app) {}

    // With `takes_value`, `--flag=false` is accepted.
    void flag(const std::string& names, bool& value, const std::string& help,
              bool takes_value = false);
    // Flags that are added to the answer exclude each other, and one of them is required.
    CommandOptions one_of(const std::string& title, const std::string& help);
    // Two options that exclude each other.
    void exclusive(const std::string& one, const std::string& other);

    // The first one means nothing without the other.
    void needs(const std::string& one, const std::string& other);

    void require(const std::string& name);

    using Take = std::function<void(const std::string& given)>;
    void text(const std::string& name, const std::string& placeholder, Take take,
              const std::string& help);
    // May be given several times.
    void texts(const std::string& name, const std::string& placeholder,
               std::vector<std::string>& values, const std::string& help);
    void number(const std::string& name, const std::string& unit, double& value, double lowest,
                double highest, const std::string& help);

    // One of a few words. The help lists them beside the placeholder if `are_listed`.
    void word(const std::string& name, const std::string& placeholder,
              const std::vector<std::string>& words, Take take, const std::string& help,
              bool are_listed = true);
    // May be given several times.
    void words(const std::string& name, const std::string& placeholder,
               const std::vector<std::string>& allowed, std::vector<std::string>& values,
               const std::string& help);
    // A word that stands for a number; the number itself is accepted too.
    void named_number(const std::string& name, const std::string& placeholder,
                      const std::map<std::string, int>& words, std::function<void(int)> take,
                      const std::string& help);

    void operand(const std::string& name, Take take, const std::string& help);
    // At least one, each taken letter for letter. After `--` they may begin with "-".
    void operands(const std::string& name, std::vector<std::string>& values,
                  const std::string& help);
    // Any number of them.
    void optional_operands(const std::string& name, std::vector<std::string>& values,
                           const std::string& help);
    // The operands PATH, and the option that belongs to names from standard input.
    void paths(PathOptions& options);
    // The same of commands that change files, with --yes and --dry-run.
    void changed_paths(ChangeOptions& options, const std::string& help_of_dry_run);
    // The same of commands that do several files at once.
    void batch(BatchOptions& options);

    // Whether a command takes what it prints from an earlier run.
    void cache(CacheOptions& options);
    // The same of a command whose output is always that of all files.
    void cache_file(CacheOptions& options);

    // How a command that changes files keeps its journal.
    void journal(JournalOptions& options);

    // Stands in the help before the example.
    void explanation(const std::string& text);

private:
    CLI::App& app_;
};

class CommandLine {
public:
    explicit CommandLine(CLI::App& program) : program_(program) {}

    // A command with --help, which ends with an example, and --version.
    CommandOptions add(const std::string& name, const std::string& help, const std::string& example,
                       Command run);

    // The command that was asked for.
    [[nodiscard]] const Command& chosen() const { return chosen_; }

private:
    CLI::App& program_;
    Command chosen_;
};

using AddCommand = void (*)(CommandLine& program);

// Reads the command line and runs its command. --help and --version, and errors of usage, are
// answered here.
[[nodiscard]] ExitStatus run_command_line(std::vector<std::string> arguments,
                                          const std::vector<AddCommand>& commands);

// The commands of the program. Each has a file of its own.
void add_show(CommandLine& program);
void add_set(CommandLine& program);
void add_apply(CommandLine& program);
void add_normalize(CommandLine& program);
void add_export(CommandLine& program);
void add_import(CommandLine& program);
void add_strip(CommandLine& program);
void add_scan(CommandLine& program);
void add_check(CommandLine& program);
void add_report(CommandLine& program);
void add_listen(CommandLine& program);
void add_time(CommandLine& program);
void add_genres(CommandLine& program);
void add_undo(CommandLine& program);
void add_journal(CommandLine& program);

}  // namespace brindle::host
