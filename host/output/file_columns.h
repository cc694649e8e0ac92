// The facts of a file as a row of a table.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>

#include "fields.h"

namespace brindle::host {

// One file of a table.
struct TableFile {
    std::string name;
    const cMPEGHeader* header = nullptr;  // none for one that failed
    std::string audio_hash = {};
    std::string error = {};
};

enum class ColumnKind {
    Name,
    IsNameEscaped,
    Field,
    CustomField,
    AudioHash,
    Error,
};

struct Column {
    ColumnKind kind = ColumnKind::Field;
    const Field* field = nullptr;
    String custom_name = {};

    // In the header.
    [[nodiscard]] std::string title() const;
    [[nodiscard]] std::string text(const TableFile& file) const;
};

// "file", "audio_sha256", "error", the key of a field, or "field:NAME" for a user-defined one.
// Nothing for any other text.
[[nodiscard]] std::optional<Column> column_of(const std::string& title);
// "file", the keys of the JSON object of a file, "error".
[[nodiscard]] std::vector<Column> all_columns();
// Adds the column of the audio's hash before "error", or at the end, if it is missing.
void add_hash_column(std::vector<Column>& columns);
[[nodiscard]] bool has_hash_column(const std::vector<Column>& columns);

struct TableForm {
    bool utf8_names = false;   // "file" by escaped_name(), with a column that says so
    bool spreadsheet = false;  // see for_spreadsheet()
};

class FileTable {
public:
    FileTable(const std::vector<Column>& columns, const TableForm& form);

    [[nodiscard]] std::string csv_header() const;
    [[nodiscard]] std::string csv_row(const TableFile& file) const;
    // For people: the texts separated by tabs, with invisible characters escaped.
    [[nodiscard]] std::string line(const TableFile& file) const;

private:
    [[nodiscard]] std::string csv_text(const std::vector<std::string>& texts) const;

    std::vector<Column> columns_;
    TableForm form_;
};

}  // namespace brindle::host
