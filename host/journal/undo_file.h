// Takes one change of one file back.
#pragma once

#include <optional>
#include <string>

#include "batch/grouped_changes.h"
#include "journal/journal.h"
#include "journal/journal_entry.h"

namespace brindle::host {

enum class UndoOutcome { Failed, Restored, WasSo };

struct UndoReport {
    UndoOutcome outcome = UndoOutcome::Failed;
    std::string line;  // for standard output
};

// Only a regular MP3 file whose whole content is what the change made of it is restored: its
// bytes, times, access rights and user attributes, and with it the pictures beside. What is passed
// by reference must outlive the change. With `dry_run` nothing is left to do.
[[nodiscard]] PlannedChange plan_undo(const JournalEntry& entry, bool dry_run, Journal& journal,
                                      UndoReport& report);

}  // namespace brindle::host
