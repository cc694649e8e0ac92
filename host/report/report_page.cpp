#include "report/report_page.h"

#include <initializer_list>

#include <nlohmann/json.hpp>

#include <brindle/text.h>

#include "report/page.h"

namespace brindle::host {

namespace {

constexpr std::string_view kRowSeparator = ",";

void append_escape(std::string& text, char16_t unit) {
    constexpr const char* kDigits = "0123456789abcdef";
    text += "\\u";
    for (const unsigned shift : {12U, 8U, 4U, 0U}) {
        text += kDigits[(unit >> shift) & 0xFU];
    }
}

// Inside of a script element, JSON must not contain what ends the element or begins a comment.
// Browsers load pure ASCII in two thirds of the time.
std::string embedded(std::string_view json) {
    constexpr char16_t kEndOfAscii = 0x80;
    std::string text;
    text.reserve(json.size());
    for (const char16_t unit : from_utf8(json)) {
        if (unit >= kEndOfAscii || unit == u'<' || unit == u'>' || unit == u'&') {
            append_escape(text, unit);
        } else {
            text += static_cast<char>(unit);
        }
    }
    return text;
}

std::string json_text_of(const Json& value) {
    constexpr int kOneLine = -1;
    return value.dump(kOneLine, ' ', false, Json::error_handler_t::replace);
}

struct ColumnPointer {
    std::string text;
    Json::json_pointer pointer;
};

// The first one is the name of the file, which is no value of JSON: it may be any bytes.
constexpr const char* kFile = "/file";
constexpr const char* kError = "/error";

using ColumnPointers = std::vector<ColumnPointer>;

ColumnPointers pointers(std::initializer_list<const char*> texts) {
    ColumnPointers list;
    for (const char* const text : texts) {
        list.push_back({text, Json::json_pointer(text)});
    }
    return list;
}

const ColumnPointers& columns_of_facts() {
    static const ColumnPointers columns = pointers(
        {kError, "/verdict", "/reasons", "/Duration", "/VBR", "/TagType", "/Titlev1Tag",
         "/artistv1Tag", "/tag/title", "/tag/artist", "/tag/album", "/tag/year", "/tag/genre/text",
         "/tag/genre/name", "/file_facts/bit_rate", "/file_facts/size", "/file_facts/modified"});
    return columns;
}

const ColumnPointers& columns_of_sound() {
    static const ColumnPointers columns =
        pointers({"/loudness_lufs", "/range_lu", "/true_peak_dbtp", "/silence_count", "/silences"});
    return columns;
}

void append_value(std::string& row, const Json& value) {
    row += "," + embedded(json_text_of(value));
}

std::string beginning_of_row(const std::string& name) {
    return std::string(kRowSeparator) + "\n[" + embedded(json_name(name));
}

// null where the object has no such value.
Json value_at(const Json& object, const Json::json_pointer& pointer) {
    return object.contains(pointer) ? object.at(pointer) : Json();
}

}  // namespace

const std::vector<std::string>& report_columns() {
    static const std::vector<std::string> columns = [] {
        std::vector<std::string> list{kFile};
        for (const auto* const part : {&columns_of_facts(), &columns_of_sound()}) {
            for (const ColumnPointer& column : *part) {
                list.push_back(column.text);
            }
        }
        return list;
    }();
    return columns;
}

std::string report_facts(const std::string& name, const Json& scanned, const Json& checked) {
    std::string row = beginning_of_row(name);
    for (const ColumnPointer& column : columns_of_facts()) {
        const Json& object = checked.contains(column.pointer) ? checked : scanned;
        append_value(row, value_at(object, column.pointer));
    }
    return row;
}

std::string report_row(const std::string& facts, const Json& heard) {
    std::string row = facts;
    for (const ColumnPointer& column : columns_of_sound()) {
        append_value(row, value_at(heard, column.pointer));
    }
    return row + "]";
}

std::string failure_row(const std::string& name, const std::string& reason) {
    std::string row = beginning_of_row(name);
    for (const ColumnPointer& column : columns_of_facts()) {
        append_value(row, column.text == kError ? Json(reason) : Json());
    }
    return report_row(row, nullptr);
}

bool is_report(std::string_view beginning) {
    constexpr std::string_view kEndOfMark = "-->";
    const std::size_t mark = kPageBeforeData.find(kEndOfMark) + kEndOfMark.size();
    return beginning.starts_with(kPageBeforeData.substr(0, mark));
}

void ReportPage::begin(const std::vector<std::string>& paths) {
    std::string text(kPageBeforeData);
    text += "{\"version\":" + json_text_of(BRINDLE_VERSION) + ",\n\"paths\":[";
    const char* separator = "";
    for (const std::string& path : paths) {
        text += separator + embedded(json_name(path));
        separator = ",";
    }
    text += "],\n\"columns\":" + json_text_of(report_columns()) + ",\n\"files\":[";
    write_(text);
}

void ReportPage::add(std::string_view rows) {
    if (!rows.empty()) {
        write_(has_rows_ ? rows : rows.substr(kRowSeparator.size()));
        has_rows_ = true;
    }
}

void ReportPage::end(const std::string& message) {
    write_("\n],\n\"message\":" + embedded(json_text_of(message)) + "}");
    write_(kPageAfterData);
}

}  // namespace brindle::host
