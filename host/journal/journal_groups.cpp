#include "journal/journal.h"

namespace brindle::host {

GroupRules journal_groups(Journal& journal) {
    if (!journal.is_kept()) {
        return {};
    }
    return {.size = kMaxJournalGroup,
            .flush = [&journal] { journal.flush(); },
            .is_full = [&journal] { return journal.is_full(); }};
}

std::string journal_size_text(const Journal& journal) {
    const std::int64_t size = journal.size();
    return size == 0 ? "" : "The journal would have about " + std::to_string(size) + " bytes\n";
}

}  // namespace brindle::host
