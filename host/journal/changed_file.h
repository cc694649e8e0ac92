// Comparison of a file with its journal entry.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <brindle/new_content.h>

#include "journal/journal_entry.h"

namespace brindle::host {

enum class Hashing { Done, LeftOut };

[[nodiscard]] PartMark mark_of(std::span<const std::uint8_t> bytes);

// The entry of a change that makes `content` of the file, whose state is `before`, and that makes
// or removes `pictures`, whose bytes are given. Errors: those of reading; 6 where the entry would
// exceed kMaxRecord.
[[nodiscard]] JournalEntry entry_of(const std::string& name, const FileState& before,
                                    const NewContent& content, std::vector<PictureFile> pictures,
                                    Hashing hashing);

enum class StandsAs {
    Before,   // as the change found it, also where it changed pictures alone
    After,    // the change has been made
    Between,  // part of it is as before: a change in place was cut off
    Other,
};

// The whole file is read.
struct Comparison {
    StandsAs state = StandsAs::Other;
    NewContent restored;  // restores the file; for After and Between
};
[[nodiscard]] Comparison compared(const std::string& name, std::int64_t size,
                                  const JournalEntry& entry);

}  // namespace brindle::host
