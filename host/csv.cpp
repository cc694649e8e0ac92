#include "csv.h"

#include "file_facts.h"

namespace brindle::host {

namespace {

constexpr char kComma = ',';
constexpr const char* kLineEnd = "\r\n";

std::string cell(const std::string& text) {
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

std::string csv_header() {
    std::string row = "file";
    for (const std::string& name : fact_names()) {
        row += kComma + name;
    }
    return row + kComma + "error" + kLineEnd;
}

std::string csv_row(const std::string& name, const cMPEGHeader& header) {
    std::string row = cell(name);
    for (const auto& value : file_facts(header, FrameValues::LeftOut)) {
        row += kComma + cell(text_of(value));
    }
    return row + kComma + kLineEnd;
}

std::string csv_failure(const std::string& name, const std::string& reason) {
    return cell(name) + std::string(fact_names().size() + 1, kComma) + cell(reason) + kLineEnd;
}

}  // namespace brindle::host
