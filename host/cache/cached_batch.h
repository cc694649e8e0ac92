// A batch that takes what it can from the cache of an earlier run.
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
    bool only_new = false;  // only what no earlier run has printed
};

// What reading a file has brought.
struct FileResult {
    Answer answer;
    Counted counted{};
    // Whether the next run would read the same. A file that fails is read again in any case.
    bool is_lasting = true;
};

class CachedBatch {
public:
    // Both are called on several threads at once.
    using Read = std::function<FileResult(const FoundName& found)>;
    // Adds a file to the summary; false when these are not numbers of the command.
    using Count = std::function<bool(const Counted& counted)>;

    // `command` is its name and all its options that decide what is printed of a file, other than
    // its name. Raises CacheError before any file is read.
    CachedBatch(const BatchOptions& options, const CacheOptions& cache, const std::string& command);

    // An answer is stored when it has been written: what a killed run has not printed, the next run
    // with `only_new` prints.
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
