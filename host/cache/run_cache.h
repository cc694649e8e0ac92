// What earlier runs have printed of files, in a database.
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

// What a file adds to the summary of a run; each command has numbers of its own.
using Counted = std::array<std::int64_t, 3>;

struct CachedAnswer {
    std::string output;
    Counted counted{};
    // Otherwise the file had changed so shortly before it was read that a further change may have
    // left the same identity: it has to be read again.
    bool is_settled = false;
    std::int64_t run = 0;  // in which the file was read
    std::int64_t day = 0;  // when a run last came across it, in days since 1970
};

// May be used on several threads.
class RunCache {
public:
    // Opens the database in this file, or makes it. `options` are the version of the program, the
    // command, and all its options that decide what is printed. Raises CacheError.
    RunCache(const std::string& file, std::string options);
    RunCache(const RunCache&) = delete;
    RunCache& operator=(const RunCache&) = delete;
    // Stores what still waits.
    ~RunCache();

    // What was printed of the file when it was as it is now, under this name and with the options.
    [[nodiscard]] std::optional<CachedAnswer> find(const std::string& name,
                                                   const FileIdentity& identity);
    // Answers wait until there are many, and a second at most as long as more of them come.
    void keep(const std::string& name, const FileIdentity& identity, CachedAnswer answer);
    // Stores what still waits and forgets files that no run has come across for long. The answer is
    // why not everything could be taken from the cache or stored in it, or nothing.
    [[nodiscard]] std::optional<std::string> finish();

    // Of this run: no other has the same.
    [[nodiscard]] std::int64_t run() const;
    [[nodiscard]] std::int64_t today() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace brindle::host
