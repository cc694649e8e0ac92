#include "output/csv.h"

#include <brindle/text.h>

#include "fields.h"
#include "output/json_values.h"
#include "output/tag_reading.h"

namespace brindle::host {

namespace {

// The frames' values are too long for a cell.
bool is_column(const Field& field) {
    return field.access.type != FieldType::FrameValues;
}

std::string text_of(const Field& field, const cMPEGHeader& header) {
    std::string text;
    if (field.access.type == FieldType::FrameIds) {
        for (const String& id : tag_frame_ids(header)) {
            text += (text.empty() ? "" : " ") + to_utf8(id);
        }
        return text;
    }
    const Variant value = field.access.get(header);
    if (const auto* string = std::get_if<String>(&value)) {
        return to_utf8(*string);
    }
    return std::holds_alternative<Empty>(value) ? "" : json_text(value);
}

}  // namespace

std::string csv_cell(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c;
        if (c == '"') {
            quoted += c;
        }
    }
    return quoted + "\"";
}

std::string csv_header() {
    std::string row = "file";
    for (const Field* field : fields_by_place()) {
        if (is_column(*field)) {
            row += kCsvComma + std::string(field->key);
        }
    }
    return row + kCsvComma + "error" + kCsvLineEnd;
}

std::string csv_row(const std::string& name, const cMPEGHeader& header) {
    std::string row = csv_cell(name);
    for (const Field* field : fields_by_place()) {
        if (is_column(*field)) {
            row += kCsvComma + csv_cell(text_of(*field, header));
        }
    }
    return row + kCsvComma + kCsvLineEnd;
}

std::string csv_failure(const std::string& name, const std::string& reason) {
    std::string row = csv_cell(name);
    for (const Field* field : fields_by_place()) {
        row += is_column(*field) ? std::string(1, kCsvComma) : "";
    }
    return row + kCsvComma + csv_cell(reason) + kCsvLineEnd;
}

}  // namespace brindle::host
