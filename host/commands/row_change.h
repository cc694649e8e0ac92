// The change of one file that a row of edits asks for, for commands that make up the row
// themselves.
#pragma once

#include <optional>
#include <string>

#include <brindle/cMPEGHeader.h>

#include "batch/grouped_changes.h"
#include "commands/edit_table.h"
#include "commands/set_file.h"
#include "journal/journal.h"
#include "system/file_state.h"

namespace brindle::host {

// `header` has read the file when it was in `state`. Of `options` only how to save counts. With
// `unicode`, values are ISO-8859-1 where that holds them, and UTF-16 otherwise. The report is
// printed.
[[nodiscard]] PlannedChange plan_row(const EditRow& row, const cMPEGHeader& header,
                                     const std::optional<FileState>& state,
                                     const SetOptions& options, bool unicode, Journal& journal);

// Nothing is to be written; prints why.
[[nodiscard]] PlannedChange nothing_written(const std::string& name, const std::string& why);

}  // namespace brindle::host
