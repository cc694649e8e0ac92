// The journals in a folder: their names, and how long they are kept.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace brindle::host {

// The name of a journal that is created now. Names are in the order of time.
[[nodiscard]] std::string new_journal_name();

// Paths of all journals in the folder, in the order of time.
[[nodiscard]] std::vector<std::string> journals_in(const std::string& folder);

// Limits for the journals that are kept when a new one is created.
struct JournalLimits {
    std::int64_t days = 90;
    std::int64_t bytes = std::int64_t{1024} * 1024 * 1024;
};

// Removes journals of the user that are older, and then the oldest until the rest takes no more
// space. Journals of running programs stay.
void remove_old_journals(const std::string& folder, const JournalLimits& limits);

}  // namespace brindle::host
