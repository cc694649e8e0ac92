#include "output/csv.h"

#include "output/file_facts.h"

namespace brindle::host {

namespace {

std::string text_of(const Json& value) {
    if (value.is_null()) {
        return {};
    }
    if (value.is_string()) {
        return value.get<std::string>();
    }
    if (!value.is_array()) {
        return value.dump();
    }
    std::string text;
    for (const Json& item : value) {
        text += (text.empty() ? "" : " ") + text_of(item);
    }
    return text;
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
    for (const std::string& name : fact_names()) {
        row += kCsvComma + name;
    }
    return row + kCsvComma + "error" + kCsvLineEnd;
}

std::string csv_row(const std::string& name, const cMPEGHeader& header) {
    std::string row = csv_cell(name);
    for (const auto& value : file_facts(header, FrameValues::LeftOut)) {
        row += kCsvComma + csv_cell(text_of(value));
    }
    return row + kCsvComma + kCsvLineEnd;
}

std::string csv_failure(const std::string& name, const std::string& reason) {
    return csv_cell(name) + std::string(fact_names().size() + 1, kCsvComma) + csv_cell(reason) +
           kCsvLineEnd;
}

}  // namespace brindle::host
