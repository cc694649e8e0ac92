// What a row of a table of edits changes in its file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>

#include "commands/edit_table.h"
#include "commands/edits.h"
#include "commands/set_file.h"
#include "output/file_columns.h"

namespace brindle::host {

struct RowEdits {
    std::vector<Edit> edits;
    std::vector<KeptValue> kept;      // of the cells with the file's current values
    std::vector<std::string> errors;  // "column Year: ..."
};

// The value of a file that cells under this title set, or nothing.
[[nodiscard]] std::optional<Column> edit_column(const std::string& title);

// Whether this is the title of a known column.
[[nodiscard]] bool is_edit_column(const std::string& title);

// `header` has read the row's file.
[[nodiscard]] RowEdits edits_of(const EditRow& row, const cMPEGHeader& header, bool unicode);

// What is to be saved of a row without errors.
[[nodiscard]] SetOptions changes_of(RowEdits row, bool unicode);

}  // namespace brindle::host
