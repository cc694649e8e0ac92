// Where sound begins and ends at a threshold that is known only at the end: for each level
// the first and the last millisecond that reaches it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "time_range.h"

namespace brindle::host {

class SoundEdges {
public:
    SoundEdges();

    // The sum over channels of the mean squares of one millisecond. Milliseconds come in order.
    void add(std::int64_t millisecond, double energy);

    // From the first to after the last millisecond at or above `threshold` (LUFS). Coders spread
    // noise over the window of their transform, before a sound and after it, `smear` milliseconds
    // long: an edge there that rises or falls by more than 20 LU is where the sound itself does.
    [[nodiscard]] std::optional<TimeRange> sound(double threshold, std::int64_t smear) const;

private:
    static constexpr double kLowest = -150;  // LUFS
    static constexpr int kStepsPerUnit = 10;
    static constexpr std::size_t kLevels = 2'500;  // up to 100 LUFS, far above full scale

    // The level's number, none below the lowest.
    [[nodiscard]] static std::optional<std::size_t> level_of(double loudness);

    // Filled up to the highest level that was reached.
    std::array<std::int64_t, kLevels> first_{};  // at this level or above
    std::array<std::int64_t, kLevels> last_{};   // at this level; -1: never
    std::size_t reached_ = 0;                    // levels
};

}  // namespace brindle::host
