// One answer per file, for any number of files, on several threads and in the order of the files.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "batch/job_tuner.h"
#include "batch/name_source.h"
#include "system/exit_status.h"

namespace brindle::host {

struct BatchOptions : PathOptions {
    bool quiet = false;
    bool changes_files = false;  // each started file is finished
    NamedFolders named_folders = NamedFolders::Walked;
    bool is_busy = false;  // jobs compute more than they read: one per processor
    unsigned jobs = 0;     // 0: as many as bring the highest throughput
    // Takes the answers' output instead of standard output, one thread at a time.
    std::function<void(std::string_view lines)> write = nullptr;
};

// The result for one file.
struct Answer {
    std::string output;                // whole lines
    std::optional<std::string> error;  // why the file failed
    std::int64_t bytes = 0;            // of the file, as far as known
    bool is_unchanged = false;         // since an earlier run: told of as a number alone
    std::function<void()> when_written = nullptr;  // called by one thread at a time
};

// Called on several threads at once.
using Job = std::function<Answer(const FoundName& found)>;

struct BatchOutcome {
    std::int64_t files = 0;  // failed ones too
    std::int64_t failures = 0;
    std::int64_t unchanged = 0;
    bool has_only_new = false;  // those that are unchanged were left out
    bool is_interrupted = false;

    [[nodiscard]] ExitStatus status() const;
    // `12 files` or `1 new file, 11 unchanged`, with a word in front when not all could be done.
    [[nodiscard]] std::string files_text() const;
};

// Runs the job on every file. Answers are written as soon as those of all files before are, and few
// are kept: when standard output can't follow, the threads wait. After SIGINT only the files in
// progress are finished. An exception of the job ends the run and is rethrown.
BatchOutcome run_batch(const BatchOptions& options, const Job& job);

}  // namespace brindle::host
