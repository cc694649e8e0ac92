// The output of earlier runs for each file, in a database.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "cache/cache_error.h"
#include "system/file_identity.h"

namespace brindle::host {

// Why this build has no cache, or nothing.
[[nodiscard]] std::optional<std::string> reason_against_caching();

// What a file adds to the summary of a run. The meaning of the numbers depends on the command.
using Counted = std::array<std::int64_t, 3>;

struct CachedAnswer {
    std::string output;
    Counted counted{};
    // False when the file had changed shortly before it was read: another change may then have left
    // the identity as it is, so the file has to be read again.
    bool is_settled = false;
    std::int64_t run = 0;  // that has read the file
    std::int64_t day = 0;  // of the last run that found the file, in days since 1970
};

// May be used on several threads.
class RunCache {
public:
    // Opens or creates the database in this file. `options` are the version of the program, the
    // command, and all its options that affect the output. Raises CacheError.
    RunCache(const std::string& file, std::string options);
    RunCache(const RunCache&) = delete;
    RunCache& operator=(const RunCache&) = delete;
    // Stores the answers that are not stored yet.
    ~RunCache();

    // The output for the file with this identity, under this name and with the options.
    [[nodiscard]] std::optional<CachedAnswer> find(const std::string& name,
                                                   const FileIdentity& identity);
    // The same with the options of another run.
    [[nodiscard]] std::optional<CachedAnswer> find_of(const std::string& options,
                                                      const std::string& name,
                                                      const FileIdentity& identity);
    // Answers are stored together: when there are many, or a second after the last time.
    void keep(const std::string& name, const FileIdentity& identity, CachedAnswer answer);
    // Stores the rest, and removes files that no run has found for a long time. Returns why the
    // cache could not be used for all files, or nothing.
    [[nodiscard]] std::optional<std::string> finish();

    // A number that no other run has.
    [[nodiscard]] std::int64_t run() const;
    [[nodiscard]] std::int64_t today() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace brindle::host
