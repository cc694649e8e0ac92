// A journal that is read.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "journal/journal_entry.h"
#include "journal/journal_format.h"
#include "system/private_file.h"

namespace brindle::host {

// The journal that a word on the command line means: the path, or a name in the user's folder.
[[nodiscard]] std::string journal_path(const std::string& word);

// Reads one entry at a time, so that its memory does not depend on their number.
class RecordedRun {
public:
    // The answer is why the journal is not read, or nothing.
    [[nodiscard]] std::optional<std::string> open(const std::string& path);

    [[nodiscard]] const JournalRun& run() const { return run_; }
    [[nodiscard]] std::int64_t size() const { return file_.size(); }
    // Its run is still going on.
    [[nodiscard]] bool goes_on() const { return file_.is_being_written(); }

    // Their number, from the lengths alone.
    [[nodiscard]] std::size_t count_entries();
    // An entry, and where its file is.
    struct Place {
        std::int64_t position = 0;
        std::string name;
        std::string target;
    };
    // Those that can be read, in their order.
    [[nodiscard]] std::vector<Place> places();
    // The entry at one of the places; none where it has been damaged since.
    [[nodiscard]] std::optional<JournalEntry> entry_at(const Place& place);

    // After one of these: what the journal lacks, a sentence, or nothing.
    [[nodiscard]] std::optional<std::string> fault() const;
    // The last entry is cut. Where the run was killed while it wrote it, its file is as before.
    [[nodiscard]] bool is_torn() const { return end_ == RecordReader::End::Torn; }

private:
    PrivateFile file_;
    JournalRun run_;
    std::int64_t first_entry_ = 0;
    RecordReader::End end_ = RecordReader::End::Whole;
};

}  // namespace brindle::host
