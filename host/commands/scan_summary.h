// Counts over all scanned files.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <string>

#include <brindle/cMPEGHeader.h>

#include "batch/batch.h"
#include "cache/run_cache.h"

namespace brindle::host {

class ScanSummary {
public:
    // What add() takes of a file.
    [[nodiscard]] static Counted counted(const cMPEGHeader& header);
    // May be called on several threads. False, and nothing is added, when counted() never answers
    // so.
    [[nodiscard]] bool add(const Counted& counted);
    [[nodiscard]] std::string text(const BatchOutcome& outcome) const;

private:
    enum class Stream { None, Constant, Variable };

    [[nodiscard]] std::int64_t streams(Stream stream) const {
        return streams_.at(static_cast<std::size_t>(stream));
    }

    std::mutex mutex_;
    std::array<std::int64_t, 3> streams_{};  // by Stream
    std::int64_t milliseconds_ = 0;
    std::array<std::int64_t, 4> tags_{};  // by tag type, 0 for none
};

}  // namespace brindle::host
