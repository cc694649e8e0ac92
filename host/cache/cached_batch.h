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

// Whether the options ask for a cache that this build does not have; an error then names the
// command.
[[nodiscard]] bool lacks_cache(const CacheOptions& cache, const std::string& command);

// The result of reading a file.
struct FileResult {
    Answer answer;
    // What the cache keeps of the file, for a command that presents it; else the output is kept.
    std::string record;
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
    // Makes the output of a file that did not fail from its record. Nothing if that is not one of
    // the command. Without a cache there is no identity.
    using Present = std::function<std::optional<std::string>(
        const std::string& name, const FileIdentity* identity, const std::string& record)>;

    // `command` is its name and all options that affect the output, except the name of a file.
    // Raises CacheError before any file is read.
    CachedBatch(const BatchOptions& options, const CacheOptions& cache, const std::string& command);

    // An answer is stored after it has been written, so the next run with `only_new` prints
    // everything that a killed run has not printed.
    [[nodiscard]] BatchOutcome run(const Read& read, const Count& count,
                                   const Present& present = nullptr);

    // What a run of another command has kept of the file, if that is certainly still so.
    [[nodiscard]] std::optional<std::string> record_of(const std::string& command,
                                                       const std::string& name,
                                                       const FileIdentity& identity);

private:
    struct Work {
        const Read& read;
        const Count& count;
        const Present& present;
    };
    [[nodiscard]] Answer answer_for(const FoundName& found, const Work& work);
    [[nodiscard]] Answer cached_answer(const FoundName& found, const FileIdentity& identity,
                                       const Work& work);
    [[nodiscard]] static Answer finished_answer(FileResult result, const std::string& name,
                                                const FileIdentity* identity, const Work& work);
    // Nothing if the file has to be read.
    [[nodiscard]] std::optional<Answer> answer_from(const CachedAnswer& cached,
                                                    const std::string& name,
                                                    const FileIdentity& identity, const Work& work);
    [[nodiscard]] bool is_old(const CachedAnswer& cached) const;
    void store_when_written(Answer& answer, const std::string& name, const FileIdentity& identity,
                            CachedAnswer cached);

    const BatchOptions& options_;
    const CacheOptions& cache_options_;
    std::optional<RunCache> cache_;
};

}  // namespace brindle::host
