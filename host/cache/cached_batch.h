// A batch that reads only files for which a cache has no answer.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "batch/batch.h"
#include "cache/run_cache.h"

namespace brindle::host {

struct CacheOptions {
    std::optional<std::string> file;
    bool only_new = false;  // print only new and changed files
};

// The result of reading a file.
struct FileResult {
    Answer answer;
    Counted counted{};
    // False if another run may read something else. Files that fail are always read again.
    bool is_lasting = true;
};

class CachedBatch {
public:
    // Both are called on several threads at the same time.
    using Read = std::function<FileResult(const FoundName& found)>;
    // Adds a file to the summary; false if the numbers are not valid for the command.
    using Count = std::function<bool(const Counted& counted)>;

    // `command` is its name and all options that affect the output, except the name of a file.
    // Raises CacheError before any file is read.
    CachedBatch(const BatchOptions& options, const CacheOptions& cache, const std::string& command);

    // An answer is stored after it has been written, so the next run with `only_new` prints
    // everything that a killed run has not printed.
    [[nodiscard]] BatchOutcome run(const Read& read, const Count& count);

private:
    [[nodiscard]] Answer answer_for(const FoundName& found, const Read& read, const Count& count);
    [[nodiscard]] Answer cached_answer(const FoundName& found, const FileIdentity& identity,
                                       const Read& read, const Count& count);
    [[nodiscard]] bool is_old(const CachedAnswer& cached) const;
    void store_when_written(Answer& answer, const std::string& name, const FileIdentity& identity,
                            CachedAnswer cached);

    const BatchOptions& options_;
    const CacheOptions& cache_options_;
    std::optional<RunCache> cache_;
};

}  // namespace brindle::host
