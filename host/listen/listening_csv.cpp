#include "listening_csv.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "output/csv.h"

namespace brindle::host {

namespace {

constexpr std::array kColumns{"file", "cue-in", "sectone", "error"};

std::string point_cell(std::int64_t point) {
    return point > 0 ? std::to_string(point) : "";
}

std::string row(const std::array<std::string, kColumns.size()>& cells) {
    std::string text;
    for (const std::string& cell : cells) {
        text += (&cell == cells.data() ? "" : std::string(1, kCsvComma)) + csv_cell(cell);
    }
    return text + kCsvLineEnd;
}

}  // namespace

std::string listening_csv_header() {
    std::array<std::string, kColumns.size()> names;
    std::copy(kColumns.begin(), kColumns.end(), names.begin());
    return row(names);
}

std::string listening_csv_row(const std::string& name, const Listening& heard,
                              const std::string& error) {
    return row({name, point_cell(heard.sound.value_or(TimeRange()).begin),
                point_cell(heard.next_start.value_or(0)), error});
}

std::string listening_csv_failure(const std::string& name, const std::string& error) {
    return row({name, "", "", error});
}

}  // namespace brindle::host
