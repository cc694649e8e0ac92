// What `brindle undo` and `brindle journal` do.
#pragma once

#include <string>
#include <vector>

#include "journal/journal.h"
#include "system/exit_status.h"

namespace brindle::host {

struct UndoOptions {
    std::string journal;             // "": that of the last run
    std::vector<std::string> files;  // of the journal; none: all
    bool dry_run = false;
    JournalOptions kept;  // of the undo itself
};

// From the last change to the first.
[[nodiscard]] ExitStatus undo_run(const UndoOptions& options);

// A line for each journal of the user, or for each change in one.
[[nodiscard]] ExitStatus list_journals();
[[nodiscard]] ExitStatus list_journal(const std::string& journal);

}  // namespace brindle::host
