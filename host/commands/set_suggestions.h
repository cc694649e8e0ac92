// What `brindle listen --set` does to one file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "commands/set_file.h"
#include "journal/journal.h"
#include "listen/listening.h"
#include "listen/suggestions.h"

namespace brindle::host {

struct SuggestionOptions {
    std::vector<std::string> columns;  // of the suggestions to set
    EndStyleTexts end_styles;
    bool overwrite = false;  // also what is set already
    bool dry_run = false;
};

// Listens to a file, unless everything is set already, and sets the suggestions as `brindle apply`
// would. Several files may be done at once. The answer is why it failed, or nothing.
[[nodiscard]] std::optional<std::string> set_suggestions(const std::string& name,
                                                         const ListenOptions& listening,
                                                         const SuggestionOptions& options,
                                                         SetReport& report, Journal& journal);

}  // namespace brindle::host
