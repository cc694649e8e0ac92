// The facts of a file as a row of a table.
#pragma once

#include <string>

#include <brindle/cMPEGHeader.h>

namespace brindle::host {

// One cell, in quotes where it needs them.
[[nodiscard]] std::string csv_cell(const std::string& text);
inline constexpr char kCsvComma = ',';
inline constexpr const char* kCsvLineEnd = "\r\n";

// Comma-separated values by RFC 4180: a header, then a row a file, each ended by CR and LF; a cell
// with a comma, a quote or a line end is quoted, and quotes inside are doubled.
//
// The columns: "file", the keys of the JSON object of a file, "error". Of "v2Frames" the ids are
// separated by blanks. Names of files keep their bytes.
[[nodiscard]] std::string csv_header();
[[nodiscard]] std::string csv_row(const std::string& name, const cMPEGHeader& header);
// Nothing but name and error.
[[nodiscard]] std::string csv_failure(const std::string& name, const std::string& reason);

}  // namespace brindle::host
