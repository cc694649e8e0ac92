#include "commands/edit_table.h"

#include <algorithm>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

#include "commands/csv_reader.h"
#include "output/csv.h"
#include "output/escaped_name.h"
#include "output/json_values.h"
#include "output/printable_text.h"

namespace brindle::host {

namespace {

constexpr std::string_view kFile = "file";
constexpr std::string_view kIsFileEscaped = "file_escaped";
constexpr std::string_view kRemove = "remove";

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// A row that cannot be read completely.
class RowError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

bool is_utf16(std::string_view text) {
    return text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF");
}

// The names in one cell, separated by commas.
std::vector<std::string> names_in(const std::string& cell) {
    try {
        return CsvReader(cell, kCsvComma).next();
    } catch (const CsvError& error) {
        throw RowError("column remove: " + std::string(error.what()));
    }
}

// --- CSV

// The first of them in the header that is not inside quotes.
char delimiter_of(std::string_view text) {
    bool is_quoted = false;
    for (const char c : text) {
        if (c == '"') {
            is_quoted = !is_quoted;
        } else if (!is_quoted && (c == ',' || c == ';' || c == '\t')) {
            return c;
        } else if (!is_quoted && (c == '\r' || c == '\n')) {
            break;
        }
    }
    return kCsvComma;
}

bool truth_of(const std::string& cell) {
    // Spreadsheets write capitals.
    if (cell == "true" || cell == "TRUE") {
        return true;
    }
    if (cell == "false" || cell == "FALSE" || cell.empty()) {
        return false;
    }
    throw RowError("column file_escaped: '" + printable(cell) + "' is neither true nor false");
}

class CsvEdits {
public:
    CsvEdits(std::string_view text, bool spreadsheet)
        : reader_(text, delimiter_of(text)), spreadsheet_(spreadsheet) {}

    EditTable read() {
        try {
            titles_ = reader_.next();
            check_titles();
            while (true) {
                ++row_;
                const auto cells = reader_.next();
                if (cells.empty()) {
                    break;
                }
                add_row(cells);
            }
        } catch (const CsvError& error) {
            // The start of the next row is unknown.
            add_error(error.what());
            table_.is_readable = row_ > 1;
        }
        return std::move(table_);
    }

private:
    [[nodiscard]] RowPlace place() const { return {row_, reader_.line()}; }

    void add_error(const std::string& text) { table_.errors.push_back({place(), text}); }

    void check_titles() {
        std::set<std::string_view> known;
        for (const std::string& title : titles_) {
            if (!known.insert(title).second) {
                throw CsvError("two columns are named '" + printable(title) + "'");
            }
            if (title != kFile && title != kIsFileEscaped && title != kRemove) {
                table_.columns.push_back(title);
            }
        }
        if (!known.contains(kFile)) {
            throw CsvError("the column 'file' is missing");
        }
    }

    void add_row(const std::vector<std::string>& cells) {
        const bool is_blank = std::all_of(cells.begin(), cells.end(),
                                          [](const std::string& cell) { return cell.empty(); });
        if (is_blank) {
            return;
        }
        try {
            table_.rows.push_back(row_of(cells));
        } catch (const RowError& error) {
            add_error(error.what());
        }
    }

    [[nodiscard]] EditRow row_of(const std::vector<std::string>& cells) const {
        if (cells.size() != titles_.size()) {
            throw RowError(std::to_string(cells.size()) + " cells where the header has " +
                           std::to_string(titles_.size()));
        }
        EditRow row{.place = place()};
        bool is_escaped = false;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::string text = spreadsheet_ ? from_spreadsheet(cells[i]) : cells[i];
            if (titles_[i] == kFile) {
                row.file = text;
            } else if (titles_[i] == kIsFileEscaped) {
                is_escaped = truth_of(text);
            } else if (text.empty()) {
                continue;
            } else if (titles_[i] == kRemove) {
                row.removed = names_in(text);
            } else {
                row.cells.push_back({titles_[i], text});
            }
        }
        if (is_escaped) {
            const auto name = unescaped_name(row.file);
            if (!name) {
                throw RowError("column file: a backslash does not begin an escape");
            }
            row.file = *name;
        }
        if (row.file.empty()) {
            throw RowError("column file: the cell is empty");
        }
        return row;
    }

    CsvReader reader_;
    bool spreadsheet_;
    std::size_t row_ = 1;
    std::vector<std::string> titles_;
    EditTable table_;
};

// --- JSON

constexpr std::size_t kEscapeLength = 6;  // of \udc80

bool is_escape_between(std::string_view text, std::string_view first, std::string_view last) {
    if (text.size() < kEscapeLength || !text.starts_with("\\u")) {
        return false;
    }
    std::string digits(text.substr(2, kEscapeLength - 2));
    for (char& c : digits) {
        c = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return digits.find_first_not_of("0123456789abcdef") == std::string::npos && digits >= first &&
           digits <= last;
}

// json_name() writes a byte that is not UTF-8 as the escape of a lone surrogate, which the parser
// refuses. With another backslash it is accepted, and with every other backslash doubled
// unescaped_name() reverses both.
std::string with_escaped_bytes(std::string_view json) {
    std::string text;
    while (!json.empty()) {
        std::size_t length = 1;
        if (json.starts_with("\\\\")) {
            text += "\\\\";
            length = 2;
        } else if (is_escape_between(json, "d800", "dbff")) {
            length = is_escape_between(json.substr(kEscapeLength), "dc00", "dfff")
                         ? 2 * kEscapeLength
                         : kEscapeLength;
        } else if (is_escape_between(json, "dc80", "dcff")) {
            // unescaped_name() expects these letters in lower case.
            text += "\\\\udc";
            text += json.substr(kEscapeLength - 2, 2);
            json.remove_prefix(kEscapeLength);
            continue;
        } else if (json.starts_with('\\')) {
            length = 2;
        }
        text += json.substr(0, length);
        json.remove_prefix(std::min(length, json.size()));
    }
    return text;
}

std::string original(const std::string& text) {
    return unescaped_name(text).value_or(text);
}

bool is_empty(const Json& value) {
    return value.is_null() || (value.is_string() && value.get_ref<const std::string&>().empty());
}

std::string text_of(const Json& value) {
    return value.is_string() ? original(value.get<std::string>()) : value.dump();
}

std::vector<std::string> removed_by(const Json& value) {
    if (value.is_string()) {
        return names_in(original(value.get<std::string>()));
    }
    std::vector<std::string> names;
    for (const Json& name : value) {
        if (!value.is_array() || !name.is_string()) {
            throw RowError("column remove: not a list of names");
        }
        names.push_back(original(name.get<std::string>()));
    }
    return names;
}

EditRow row_of(const RowPlace& place, const std::string& line) {
    const Json object = Json::parse(with_escaped_bytes(line), nullptr, /*allow_exceptions=*/false);
    if (!object.is_object()) {
        throw RowError("the line is not a JSON object");
    }
    EditRow row{.place = place};
    for (const auto& [escaped_key, value] : object.items()) {
        const std::string key = original(escaped_key);
        if (is_empty(value)) {
            continue;
        }
        if (key == kFile) {
            if (!value.is_string()) {
                throw RowError("column file: the name is not a text");
            }
            row.file = text_of(value);
        } else if (key == kRemove) {
            row.removed = removed_by(value);
        } else if (value.is_structured()) {
            row.cells.push_back({key, "", false});
        } else {
            row.cells.push_back({key, text_of(value)});
        }
    }
    if (row.file.empty()) {
        throw RowError("'file' is missing");
    }
    return row;
}

EditTable read_json_lines(std::string_view text) {
    EditTable table;
    RowPlace place;
    for (; !text.empty(); ++place.row, ++place.line) {
        const std::string line(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.find_first_not_of(" \t\r") == std::string::npos) {
            continue;
        }
        try {
            table.rows.push_back(row_of(place, line));
        } catch (const RowError& error) {
            table.errors.push_back({place, error.what()});
        }
    }
    return table;
}

}  // namespace

std::string RowPlace::text() const {
    return "row " + std::to_string(row) +
           (line == row ? "" : " (line " + std::to_string(line) + ")");
}

EditTable read_edits(const std::string& text, bool spreadsheet) {
    if (is_utf16(text)) {
        return {.errors = {{{}, "the table is UTF-16; save the table as UTF-8"}},
                .is_readable = false};
    }
    std::string_view content = text;
    if (content.starts_with(kByteOrderMark)) {
        content.remove_prefix(kByteOrderMark.size());
    }
    const std::size_t first = content.find_first_not_of(" \t\r\n");
    if (first != std::string_view::npos && content[first] == '{') {
        return read_json_lines(content);
    }
    return CsvEdits(content, spreadsheet).read();
}

}  // namespace brindle::host
