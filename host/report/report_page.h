// One HTML page with facts of many files, written in pieces.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "output/json_values.h"

namespace brindle::host {

// What each file's row has, as JSON pointers into the objects of `scan --json`, `check --json` and
// `listen --json`.
[[nodiscard]] const std::vector<std::string>& report_columns();

// The beginning of a file's row: everything but what was heard.
[[nodiscard]] std::string report_facts(const std::string& name, const Json& scanned,
                                       const Json& checked);
// The rows of a file, and of one that could not be read; ready for ReportPage::add. `heard` is null
// for a file nobody has listened to.
[[nodiscard]] std::string report_row(const std::string& facts, const Json& heard);
[[nodiscard]] std::string failure_row(const std::string& name, const std::string& reason);

// Whether a file with this beginning is such a page.
[[nodiscard]] bool is_report(std::string_view beginning);

class ReportPage {
public:
    using Write = std::function<void(std::string_view text)>;
    explicit ReportPage(Write write) : write_(std::move(write)) {}

    void begin(const std::vector<std::string>& paths);
    // Any number of rows.
    void add(std::string_view rows);
    // With the sentence, if there is one, above all else.
    void end(const std::string& message);

private:
    Write write_;
    bool has_rows_ = false;
};

}  // namespace brindle::host
