#include "output/csv.h"

#include <string_view>

namespace brindle::host {

namespace {

constexpr char kPrefix = '\'';

bool needs_prefix(std::string_view text) {
    constexpr std::string_view kBeginnings = "=+-@'\t\r";
    return !text.empty() && kBeginnings.find(text.front()) != std::string_view::npos;
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

std::string for_spreadsheet(const std::string& text) {
    return needs_prefix(text) ? kPrefix + text : text;
}

std::string from_spreadsheet(const std::string& cell) {
    const bool has_prefix = cell.size() > 1 && cell.front() == kPrefix &&
                            needs_prefix(std::string_view(cell).substr(1));
    return has_prefix ? cell.substr(1) : cell;
}

}  // namespace brindle::host
