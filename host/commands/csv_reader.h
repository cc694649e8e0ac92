// Rows of comma-separated values by RFC 4180.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace brindle::host {

class CsvError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Takes CR LF, LF and CR as line ends; lines without a character are left out.
class CsvReader {
public:
    CsvReader(std::string_view text, char delimiter) : text_(text), delimiter_(delimiter) {}

    // The cells of the next row; none at the end. Raises CsvError for what is no row.
    [[nodiscard]] std::vector<std::string> next();
    // The line, from 1, in which the last row began.
    [[nodiscard]] std::size_t line() const { return row_line_; }

private:
    [[nodiscard]] bool is_at_end() const { return position_ == text_.size(); }
    [[nodiscard]] bool is_at_line_end() const;
    void skip_line_end();
    std::string quoted_cell();
    std::string plain_cell();

    std::string_view text_;
    char delimiter_;
    std::size_t position_ = 0;
    std::size_t line_ = 1;
    std::size_t row_line_ = 0;
};

}  // namespace brindle::host
