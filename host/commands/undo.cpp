// brindle undo and brindle journal: restoring files, and listing journals.
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "commands/command_line.h"
#include "journal/journal.h"
#include "journal/undo_run.h"
#include "output/standard_streams.h"

namespace brindle::host {

namespace {

ExitStatus with_journals(const std::string& command, const std::function<ExitStatus()>& run) {
    if (const auto reason = reason_against_journals()) {
        write_error(command + ": " + *reason);
        return ExitStatus::WrongUsage;
    }
    return run();
}

}  // namespace

void add_undo(CommandLine& program) {
    struct Options : UndoOptions {
        std::vector<std::string> operands;
    };
    const auto options = std::make_shared<Options>();
    const auto run = [options] {
        if (!options->operands.empty()) {
            options->journal = options->operands.front();
            options->files.assign(options->operands.begin() + 1, options->operands.end());
        }
        return with_journals("undo", [&] { return undo_run(*options); });
    };
    CommandOptions command =
        program.add("undo", "Take back what the last run changed, byte for byte",
                    "brindle undo --dry-run", run);
    command.flag("--dry-run", options->dry_run, "Show what would be restored; write nothing");
    command.journal(options->kept);
    command.optional_operands("JOURNAL", options->operands,
                              "The journal of another run, followed by files of that run");
}

void add_journal(CommandLine& program) {
    const auto operands = std::make_shared<std::vector<std::string>>();
    const auto run = [operands] {
        if (operands->size() > 1) {
            throw UsageError("One JOURNAL at a time");
        }
        return with_journals("journal", [&] {
            return operands->empty() ? list_journals() : list_journal(operands->front());
        });
    };
    CommandOptions command = program.add(
        "journal", "List the journals, or the changes in one of them", "brindle journal", run);
    command.optional_operands("JOURNAL", *operands, "The journal to list");
}

}  // namespace brindle::host
