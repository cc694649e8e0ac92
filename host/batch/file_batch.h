// One file after the other.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "batch/grouped_changes.h"
#include "batch/name_source.h"
#include "system/exit_status.h"
#include "system/input_file.h"

namespace brindle::host {

// What is done with one file; the answer is why it failed, or nothing.
using FileStep = std::function<std::optional<std::string>()>;

// Runs the step; an error that it raises is the reason, too.
[[nodiscard]] std::optional<std::string> outcome_of(const FileStep& step);
// The same with the file opened before.
[[nodiscard]] std::optional<std::string> outcome_of(InputFile& file, const FileStep& step);

struct ChangeOptions : PathOptions {
    bool yes = false;      // changes files in folders without asking
    bool dry_run = false;  // changes nothing
};

// Whether the files in folders among the paths may be changed: a person at the terminal is asked.
enum class Consent { Given, Refused, NobodyToAsk };
[[nodiscard]] Consent ask_for_folders(const ChangeOptions& options);

// They are walked only where that needs no consent, as nobody can count them before.
[[nodiscard]] NamedFolders folders_named_by_input(const ChangeOptions& options);

// In groups, which end early where the next name has to be waited for. A file that fails does not
// stop the others. SIGINT does: the current file is finished, the rest is not changed, and the
// number of files done is printed. Folders are entered without asking, but those that standard
// input names need `yes`.
[[nodiscard]] ExitStatus for_each_file(const ChangeOptions& options, const PlanStep& plan,
                                       const GroupRules& rules);

}  // namespace brindle::host
