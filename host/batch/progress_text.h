// The line that a progress bar draws.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace brindle::host {

struct Amount {
    std::int64_t files = 0;
    std::int64_t bytes = 0;
};

struct Progress {
    Amount done;
    std::optional<Amount> total;  // once everything is counted
    double seconds = 0;           // since the beginning
};

// "[=====>     ]  45 %  9123 of 20000 files  1.2 GB  812 files/s  00:13 left", in no more columns
// than there are. Without a total what depends on it is left out.
[[nodiscard]] std::string progress_text(const Progress& progress, int columns, bool colours);

}  // namespace brindle::host
