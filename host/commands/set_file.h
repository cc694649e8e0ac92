// What `brindle set` does to one file, in two ways.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_facts.h>

#include "batch/file_batch.h"
#include "batch/grouped_changes.h"
#include "commands/command_line.h"
#include "commands/edits.h"
#include "commands/file_work.h"
#include "journal/journal.h"
#include "system/file_state.h"

namespace brindle::host {

// A value that a save may not change for hosts.
struct KeptValue {
    ShownValue shown;
    std::function<bool(const cMPEGHeader& header, const TagFacts& facts)> is_kept;
};

struct SetOptions : ChangeOptions {
    JournalOptions journal;
    std::vector<Edit> edits;
    bool separate = false;
    bool preserve = false;
    bool force = false;
    bool atomic = false;
    bool unicode = false;
    bool latin1 = false;  // see brindle::EditOptions
    bool host_form = false;
    bool common_form = false;  // see brindle::EditOptions
    std::vector<KeptValue> kept;
    // Where the values depend on the file's content: how it was when they were found.
    std::optional<FileState> expected_state;
    // Starts what else is done to a file.
    std::function<std::unique_ptr<FileWork>(const std::string& name)> work;
    // The option that saves a refused file.
    std::string way_to_force = "--force";
};

// --preserve, --force and --atomic, and those of the journal.
void add_saving_options(CommandOptions& command, SetOptions& options);

struct SetReport {
    std::string lines;  // to be printed
    bool is_written = false;
    bool is_outdated = false;  // the file is in another state than was expected
};

// Sets values of one file and leaves all other frames as they are. Several
// files may be done at once. What is passed by reference must outlive the change. A dry run
// ends with the plan.
[[nodiscard]] PlannedChange plan_with_editor(const std::string& name, const SetOptions& options,
                                             SetReport& report, Journal& journal);

// Plans and writes, with a flush of the journal in between. The answer is why the file failed, or
// nothing.
[[nodiscard]] std::optional<std::string> set_with_editor(const std::string& name,
                                                         const SetOptions& options,
                                                         SetReport& report, Journal& journal);

// As plan_with_editor(), with the report on standard output.
[[nodiscard]] PlannedChange plan_and_print(const std::string& name, const SetOptions& options,
                                           Journal& journal);

// Sets and saves one file as hosts do it with SaveAllInfo. The answer is why it failed, or nothing.
[[nodiscard]] std::optional<std::string> set_in_host_form(const std::string& name,
                                                          const SetOptions& options,
                                                          Journal& journal);

}  // namespace brindle::host
