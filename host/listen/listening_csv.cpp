#include "listening_csv.h"

#include <vector>

#include "output/csv.h"

namespace brindle::host {

namespace {

std::string row(const std::vector<std::string>& cells) {
    std::string text;
    for (const std::string& cell : cells) {
        text += (&cell == cells.data() ? "" : std::string(1, kCsvComma)) + csv_cell(cell);
    }
    return text + kCsvLineEnd;
}

}  // namespace

std::string listening_csv_header(const EndStyleTexts& texts) {
    std::vector<std::string> names{"file"};
    for (const Suggestion& suggestion : suggestions({}, texts)) {
        names.push_back(suggestion.column);
    }
    names.emplace_back("error");
    return row(names);
}

std::string listening_csv_row(const std::string& name, const Listening& heard,
                              const EndStyleTexts& texts, const std::string& error) {
    std::vector<std::string> cells{name};
    for (const Suggestion& suggestion : suggestions(heard, texts)) {
        cells.push_back(suggestion.text == "0" ? "" : suggestion.text);
    }
    cells.push_back(error);
    return row(cells);
}

std::string listening_csv_failure(const std::string& name, const EndStyleTexts& texts,
                                  const std::string& error) {
    return listening_csv_row(name, {}, texts, error);
}

}  // namespace brindle::host
