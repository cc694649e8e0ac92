// How many files of a run have which verdict.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "cache/cached_batch.h"
#include "commands/check_reasons.h"

namespace brindle::host {

// Files are added by several threads at the same time.
class CheckSummary {
public:
    // What a cache keeps of a file for the summary.
    [[nodiscard]] static Counted counted(const std::vector<Finding>& findings);
    // False if the numbers are not valid.
    [[nodiscard]] bool add(const Counted& counted);

    [[nodiscard]] std::int64_t files_with(Verdict verdict) const;
    // `12 files: 10 ok, 1 warn, 1 bad, 0 failed`
    [[nodiscard]] std::string text(const BatchOutcome& outcome) const;

private:
    std::array<std::atomic<std::int64_t>, 4> counts_{};  // by verdict
};

}  // namespace brindle::host
