// Counts over all scanned files.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <string>

#include <brindle/cMPEGHeader.h>

#include "batch/batch.h"

namespace brindle::host {

class ScanSummary {
public:
    // May be called on several threads.
    void add(const cMPEGHeader& header);
    [[nodiscard]] std::string text(const BatchOutcome& outcome) const;

private:
    struct Streams {
        std::int64_t constant = 0;
        std::int64_t variable = 0;
        std::int64_t none = 0;
    };

    std::mutex mutex_;
    Streams streams_;
    std::int64_t milliseconds_ = 0;
    std::array<std::int64_t, 4> tags_{};  // by tag type, 0 for none
};

}  // namespace brindle::host
