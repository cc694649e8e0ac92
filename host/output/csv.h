// Comma-separated values by RFC 4180.
#pragma once

#include <string>

namespace brindle::host {

// One cell, in quotes where it needs them: with a comma, a quote or a line end, and quotes inside
// are doubled.
[[nodiscard]] std::string csv_cell(const std::string& text);
inline constexpr char kCsvComma = ',';
inline constexpr const char* kCsvLineEnd = "\r\n";

// Spreadsheets take a cell that begins with one of a few characters for a formula, and drop a
// single quote in front of it.
[[nodiscard]] std::string for_spreadsheet(const std::string& text);
// The reverse of for_spreadsheet().
[[nodiscard]] std::string from_spreadsheet(const std::string& cell);

}  // namespace brindle::host
