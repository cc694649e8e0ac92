// What is heard in a file, as a row of edits.
#pragma once

#include <string>

#include "listening.h"

namespace brindle::host {

// The columns bear the names of the options of `brindle set` that they are meant for, so that
// suggestions can be looked through in a spreadsheet before they are written; "error" is the last.
// A value that is not known, and a point at 0, which hosts take for none, is an empty cell.
[[nodiscard]] std::string listening_csv_header();
[[nodiscard]] std::string listening_csv_row(const std::string& name, const Listening& heard,
                                            const std::string& error);
// Nothing but name and error.
[[nodiscard]] std::string listening_csv_failure(const std::string& name, const std::string& error);

}  // namespace brindle::host
