// The journal of a run: the data to restore a file is on the device before the file is changed.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <brindle/new_content.h>

#include "batch/grouped_changes.h"
#include "journal/journal_entry.h"
#include "journal/journal_folder.h"
#include "system/file_state.h"

namespace brindle::host {

// Why this build keeps no journals, or nothing.
[[nodiscard]] std::optional<std::string> reason_against_journals();

struct JournalOptions {
    bool none = false;
    std::optional<std::string> file = {};  // not the user's folder
    JournalLimits limits = {};
};

// No journal can be kept, so nothing may be changed. The text says what the user can do.
class JournalError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Files whose entries one flush covers.
inline constexpr std::size_t kMaxJournalGroup = 64;
// Bytes after which an earlier flush makes room in memory.
inline constexpr std::int64_t kMaxPendingBytes = std::int64_t{16} * 1024 * 1024;

// Of a change of pictures alone.
[[nodiscard]] inline NewContent unchanged_content(const FileState& state) {
    return {.front = {}, .kept_from = 0, .kept_to = state.size, .back = {}};
}

class Journal {
public:
    // `undone` is the journal that the run takes back. No file is made before the first entry.
    Journal(const JournalOptions& options, std::string command, std::string undone = "");
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;
    ~Journal();

    // False if the user disabled journals, and in a build without them.
    [[nodiscard]] bool is_kept() const;

    // The members below do nothing where none is kept. They may be called on several threads.

    // A change that is about to be made to the file, whose state is `before` and which has been
    // read since. Errors: those of reading; 6 for more bytes than a journal holds of a file.
    void add(const std::string& name, const FileState& before, const NewContent& content,
             const std::vector<PictureFile>& pictures = {});
    // The same for a change that is not made: counts the bytes.
    void count(const std::string& name, const FileState& before, const NewContent& content,
               const std::vector<PictureFile>& pictures = {});
    // Returns when all entries that this thread has added are on the device. One flush serves all
    // threads that wait for it. Raises JournalError; after that, every call does.
    void flush();
    // Whether flush() would have much to write.
    [[nodiscard]] bool is_full() const;

    // Bytes of all entries, written and counted.
    [[nodiscard]] std::int64_t size() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

// Groups of files whose entries share a flush.
[[nodiscard]] GroupRules journal_groups(Journal& journal);

// `The journal would have about 512 bytes`, a line for dry runs; "" where nothing would be written.
[[nodiscard]] std::string journal_size_text(const Journal& journal);

}  // namespace brindle::host
