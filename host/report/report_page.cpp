#include "report/report_page.h"

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

const std::vector<ColumnPointer>& columns_after_file() {
    static const std::vector<ColumnPointer> columns = [] {
        std::vector<ColumnPointer> list;
        for (const char* const text :
             {kError, "/verdict", "/reasons", "/Duration", "/VBR", "/TagType", "/Titlev1Tag",
              "/artistv1Tag", "/tag/title", "/tag/artist", "/tag/album", "/tag/year",
              "/tag/genre/text", "/tag/genre/name", "/file_facts/bit_rate", "/file_facts/size",
              "/file_facts/modified"}) {
            list.push_back({text, Json::json_pointer(text)});
        }
        return list;
    }();
    return columns;
}

std::string row_of(const std::string& name, const Json& values) {
    std::string row(kRowSeparator);
    row += "\n[" + embedded(json_name(name)) + ",";
    return row.append(embedded(json_text_of(values)), 1);
}

// null where the object has no such value.
Json value_at(const Json& object, const Json::json_pointer& pointer) {
    return object.contains(pointer) ? object.at(pointer) : Json();
}

}  // namespace

const std::vector<std::string>& report_columns() {
    static const std::vector<std::string> columns = [] {
        std::vector<std::string> list{kFile};
        for (const ColumnPointer& column : columns_after_file()) {
            list.push_back(column.text);
        }
        return list;
    }();
    return columns;
}

std::string report_row(const std::string& name, const Json& scanned, const Json& checked) {
    Json values = Json::array();
    for (const ColumnPointer& column : columns_after_file()) {
        const Json& object = checked.contains(column.pointer) ? checked : scanned;
        values.push_back(value_at(object, column.pointer));
    }
    return row_of(name, values);
}

std::string failure_row(const std::string& name, const std::string& reason) {
    Json values = Json::array();
    for (const ColumnPointer& column : columns_after_file()) {
        values.push_back(column.text == kError ? Json(reason) : Json());
    }
    return row_of(name, values);
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
