// A table of edits: one row per file.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace brindle::host {

// Where a row begins. In CSV the header is row 1, as spreadsheets count; in lines of JSON a row is
// a line.
struct RowPlace {
    std::size_t row = 1;
    std::size_t line = 1;  // of the text

    // `row 5`, with the line where it is another one: a cell may hold several lines.
    [[nodiscard]] std::string text() const;
};

struct EditCell {
    std::string column;
    std::string text;      // never empty
    bool is_plain = true;  // false for a list or an object of JSON
};

struct EditRow {
    RowPlace place;
    std::string file = {};
    std::vector<EditCell> cells = {};       // those that are not empty
    std::vector<std::string> removed = {};  // the names in the column "remove"
};

struct TableError {
    RowPlace place;
    std::string text;  // "column file: ..." where it is about one
};

struct EditTable {
    std::vector<std::string> columns = {};  // of CSV, but for "file", "file_escaped" and "remove"
    std::vector<EditRow> rows = {};
    std::vector<TableError> errors = {};  // rows that could not be read
    bool is_readable = true;  // false: the header has an error, so no row can be trusted
};

// CSV with a header, or lines of JSON objects: told apart by the first character, and commas,
// semicolons and tabs by the header. With `spreadsheet`, CSV as for_spreadsheet() makes it.
[[nodiscard]] EditTable read_edits(const std::string& text, bool spreadsheet);

}  // namespace brindle::host
