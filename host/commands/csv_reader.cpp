#include "commands/csv_reader.h"

namespace brindle::host {

namespace {

constexpr char kQuote = '"';

}  // namespace

std::vector<std::string> CsvReader::next() {
    while (!is_at_end() && is_at_line_end()) {
        skip_line_end();
    }
    row_line_ = line_;
    std::vector<std::string> cells;
    if (is_at_end()) {
        return cells;
    }
    while (true) {
        const bool is_quoted = !is_at_end() && text_[position_] == kQuote;
        cells.push_back(is_quoted ? quoted_cell() : plain_cell());
        if (is_at_end()) {
            return cells;
        }
        if (is_at_line_end()) {
            skip_line_end();
            return cells;
        }
        if (text_[position_] != delimiter_) {
            throw CsvError("a quoted cell continues after its closing quote");
        }
        ++position_;
    }
}

bool CsvReader::is_at_line_end() const {
    return text_[position_] == '\r' || text_[position_] == '\n';
}

void CsvReader::skip_line_end() {
    const bool is_pair = text_.substr(position_).starts_with("\r\n");
    position_ += is_pair ? 2 : 1;
    ++line_;
}

std::string CsvReader::quoted_cell() {
    std::string cell;
    ++position_;
    while (!is_at_end()) {
        const char c = text_[position_++];
        if (c != kQuote) {
            cell += c;
            line_ += c == '\n' ? 1 : 0;
        } else if (!is_at_end() && text_[position_] == kQuote) {
            cell += text_[position_++];
        } else {
            return cell;
        }
    }
    throw CsvError("a quoted cell has no closing quote");
}

std::string CsvReader::plain_cell() {
    std::string cell;
    while (!is_at_end() && !is_at_line_end() && text_[position_] != delimiter_) {
        if (text_[position_] == kQuote) {
            throw CsvError("a cell without quotes contains a quote");
        }
        cell += text_[position_++];
    }
    return cell;
}

}  // namespace brindle::host
