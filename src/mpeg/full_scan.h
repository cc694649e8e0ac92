// The average bit rate of a stream, by walking all its frames.
#pragma once

#include <cstdint>
#include <optional>

#include <brindle/values.h>

#include "mpeg/block_walk.h"
#include "util/clock.h"
#include "util/file_window.h"
#include "util/host.h"

namespace brindle {

// Looks from a position on for the first chain of frames that is long and fast enough.
class FullScan {
public:
    FullScan(const String& file_name, FileWindow& window, Clock& clock, Host* host)
        : file_name_(file_name),
          window_(window),
          host_(host),
          clock_(clock),
          reported_(clock.seconds()) {}

    // None when no chain is accepted, or when the host cancelled. A position is a first frame's
    // when the chain from it is accepted; the earliest one counts.
    std::optional<WalkedStream> run(std::int32_t start);
    [[nodiscard]] bool cancelled() const noexcept { return cancelled_; }

private:
    // The chain that starts at `start`; the usual stream needs no more.
    WalkedStream walk_from(std::int32_t start);
    // The earliest accepted chain from `begin` on, in one pass from the file's end.
    std::optional<WalkedStream> earliest_from(std::int32_t begin);
    // Once a block of the file, which is often enough for a person.
    void report(std::int64_t position);

    const String& file_name_;
    FileWindow& window_;
    Host* host_;
    Clock& clock_;
    double reported_;
    bool cancelled_ = false;
};

}  // namespace brindle
