// The measurements of a file, as a row of edits.
#pragma once

#include <string>

#include "listening.h"
#include "suggestions.h"

namespace brindle::host {

// The suggestions under the names that `brindle apply` reads, so that they can be reviewed in
// a spreadsheet before they are written; "file" is the first column, "error" the last. A value that
// is not known, and a point at 0, which hosts take for not set, is an empty cell.
[[nodiscard]] std::string listening_csv_header(const EndStyleTexts& texts);
[[nodiscard]] std::string listening_csv_row(const std::string& name, const Listening& heard,
                                            const EndStyleTexts& texts, const std::string& error);
// Nothing but name and error.
[[nodiscard]] std::string listening_csv_failure(const std::string& name, const EndStyleTexts& texts,
                                                const std::string& error);

}  // namespace brindle::host
