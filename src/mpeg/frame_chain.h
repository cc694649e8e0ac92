// Runs of frames that follow each other without a gap.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "mpeg/frame_header.h"
#include "mpeg/pacing.h"
#include "util/clock.h"
#include "util/file_window.h"
#include "util/host.h"

namespace brindle {

// As many frames as have to confirm a first one.
inline constexpr std::int32_t kMaxConfirmations = 100;

struct ChainOutcome {
    bool found = false;  // all the frames that were needed follow
    // Frames that followed: all when found, those in front of the file's end when the chain came
    // there, 0 when it broke anywhere else.
    std::int32_t count = 0;
    bool bit_rate_differs = false;  // when found: in some frame from the first one's
};

// Follows chains from first frames in the order of their positions. Chains that meet share their
// tails, so the outcome of a failed one is kept for its frames and no frame is walked twice.
class FrameChains {
public:
    FrameChains(FileWindow& window, Clock& clock, Host* host)
        : window_(window), host_(host), yield_timer_(clock, window) {}

    // The first frame is at `position`; no earlier call had a later one.
    ChainOutcome follow(std::int64_t position, const FrameHeader& first, std::int32_t needed);
    // Gives the memory back, for who needs some after the last chain.
    void forget_all() noexcept { tails_ = std::vector<std::uint8_t>(); }

private:
    enum class Break : std::uint8_t { Invalid, FileEnd };
    struct Tail {
        std::int32_t links;  // frames that follow
        Break reason;
    };

    using Followers = std::array<std::int64_t, kMaxConfirmations>;
    // How far a chain has been followed.
    struct Run {
        std::int64_t position;  // of its last frame
        std::uint32_t length;   // of that frame
        std::int32_t count;
    };

    void run_through_window(const FrameHeader& first, std::int32_t needed, Run& run,
                            Followers& followers) const;
    void forget_before(std::int64_t position);
    [[nodiscard]] bool knows(std::int64_t position) const;
    [[nodiscard]] Tail recall(std::int64_t position) const;
    void remember(std::int64_t position, const Tail& tail);
    [[nodiscard]] bool reaches_file_end(std::int64_t position) const;

    FileWindow& window_;
    Host* host_;
    YieldTimer yield_timer_;
    std::vector<std::uint8_t> tails_;  // a ring over positions, made when the first chain breaks
    std::int64_t forgotten_before_ = 0;
};

}  // namespace brindle
