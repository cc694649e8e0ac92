#include "output/file_columns.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <brindle/text.h>

#include "output/csv.h"
#include "output/escaped_name.h"
#include "output/json_values.h"
#include "output/printable_text.h"
#include "output/tag_reading.h"

namespace brindle::host {

namespace {

constexpr const char* kName = "file";
constexpr const char* kIsNameEscaped = "file_escaped";
constexpr const char* kAudioHash = "audio_sha256";
constexpr const char* kError = "error";
constexpr std::string_view kCustomPrefix = "field:";

// The frames' values are too long for a cell.
bool is_column(const Field& field) {
    return field.access.type != FieldType::FrameValues;
}

std::string text_of(const Variant& value) {
    if (const auto* string = std::get_if<String>(&value)) {
        return to_utf8(*string);
    }
    return std::holds_alternative<Empty>(value) ? "" : json_text(value);
}

std::string field_text(const Field& field, const cMPEGHeader& header) {
    if (field.access.type != FieldType::FrameIds) {
        return text_of(field.access.get(header));
    }
    std::string ids;
    for (const String& id : tag_frame_ids(header)) {
        ids += (ids.empty() ? "" : " ") + to_utf8(id);
    }
    return ids;
}

std::string custom_text(const String& name, const cMPEGHeader& header) {
    return header.CustomFieldExists(name) ? text_of(header.CustomFieldRetrieve(name)) : "";
}

}  // namespace

std::string Column::title() const {
    switch (kind) {
        case ColumnKind::Name:
            return kName;
        case ColumnKind::IsNameEscaped:
            return kIsNameEscaped;
        case ColumnKind::Field:
            return field->key;
        case ColumnKind::CustomField:
            return std::string(kCustomPrefix) + to_utf8(custom_name);
        case ColumnKind::AudioHash:
            return kAudioHash;
        case ColumnKind::Error:
            break;
    }
    return kError;
}

std::string Column::text(const TableFile& file) const {
    switch (kind) {
        case ColumnKind::Name:
            return file.name;
        case ColumnKind::IsNameEscaped:
            return json_text(escaped_name(file.name) != file.name);
        case ColumnKind::Field:
            return file.header != nullptr ? field_text(*field, *file.header) : "";
        case ColumnKind::CustomField:
            return file.header != nullptr ? custom_text(custom_name, *file.header) : "";
        case ColumnKind::AudioHash:
            return file.audio_hash;
        case ColumnKind::Error:
            break;
    }
    return file.error;
}

std::optional<Column> column_of(const std::string& title) {
    if (title == kName) {
        return Column{.kind = ColumnKind::Name};
    }
    if (title == kAudioHash) {
        return Column{.kind = ColumnKind::AudioHash};
    }
    if (title == kError) {
        return Column{.kind = ColumnKind::Error};
    }
    if (title.starts_with(kCustomPrefix) && title.size() > kCustomPrefix.size()) {
        return Column{.kind = ColumnKind::CustomField,
                      .custom_name = from_utf8(title.substr(kCustomPrefix.size()))};
    }
    const auto fields = all_fields();
    const auto field = std::find_if(fields.begin(), fields.end(), [&](const Field& candidate) {
        return candidate.key == title && is_column(candidate);
    });
    return field == fields.end() ? std::nullopt : std::optional(Column{.field = &*field});
}

std::vector<Column> all_columns() {
    std::vector<Column> columns{Column{.kind = ColumnKind::Name}};
    for (const Field* field : fields_by_place()) {
        if (is_column(*field)) {
            columns.push_back({.field = field});
        }
    }
    columns.push_back({.kind = ColumnKind::Error});
    return columns;
}

bool has_hash_column(const std::vector<Column>& columns) {
    return std::any_of(columns.begin(), columns.end(),
                       [](const Column& column) { return column.kind == ColumnKind::AudioHash; });
}

void add_hash_column(std::vector<Column>& columns) {
    if (has_hash_column(columns)) {
        return;
    }
    const bool ends_with_error = !columns.empty() && columns.back().kind == ColumnKind::Error;
    columns.insert(columns.end() - (ends_with_error ? 1 : 0), {.kind = ColumnKind::AudioHash});
}

FileTable::FileTable(const std::vector<Column>& columns, const TableForm& form) : form_(form) {
    for (const Column& column : columns) {
        columns_.push_back(column);
        if (column.kind == ColumnKind::Name && form.utf8_names) {
            columns_.push_back({.kind = ColumnKind::IsNameEscaped});
        }
    }
}

std::string FileTable::csv_header() const {
    std::vector<std::string> titles;
    for (const Column& column : columns_) {
        titles.push_back(column.title());
    }
    return csv_text(titles);
}

std::string FileTable::csv_row(const TableFile& file) const {
    std::vector<std::string> texts;
    for (const Column& column : columns_) {
        const std::string text = column.text(file);
        texts.push_back(column.kind == ColumnKind::Name && form_.utf8_names ? escaped_name(text)
                                                                            : text);
    }
    return csv_text(texts);
}

std::string FileTable::csv_text(const std::vector<std::string>& texts) const {
    std::string row;
    for (const std::string& text : texts) {
        row += &text == texts.data() ? "" : std::string(1, kCsvComma);
        row += csv_cell(form_.spreadsheet ? for_spreadsheet(text) : text);
    }
    // Most readers do not take an empty line for a row.
    return (row.empty() ? "\"\"" : row) + kCsvLineEnd;
}

std::string FileTable::line(const TableFile& file) const {
    std::string line;
    for (const Column& column : columns_) {
        line += std::string(&column == columns_.data() ? "" : "\t") + printable(column.text(file));
    }
    return line + "\n";
}

}  // namespace brindle::host
