// Names of files from standard input.
#pragma once

#include <optional>
#include <string>

#include "batch/found_name.h"

namespace brindle::host {

// One name for each NUL or line, as they come; nothing waits for the end of the input. Names are
// separated by NULs when the first bytes that arrive hold one (as `find -print0` writes them), or
// when that is asked for; then they may hold line feeds.
class NameInput {
public:
    explicit NameInput(bool null_separated) : by_nulls_(null_separated) {}

    // None at the end, and when the program is interrupted while it waits.
    [[nodiscard]] std::optional<FoundName> next();

private:
    [[nodiscard]] bool is_separator(char c) const;
    // False when no more comes.
    bool fill();

    bool by_nulls_;
    bool is_first_ = true;
    bool has_failed_ = false;
    std::optional<std::string> failure_;
    std::string block_;
    std::size_t position_ = 0;
    std::string name_;
};

}  // namespace brindle::host
