// The level of a file over time, for thresholds that are known only at the end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "time_range.h"

namespace brindle::host {

class LevelCurve {
public:
    // Duration of one value, until there are kMaxValues: then pairs are merged, and so on.
    // Almost three hours have the finest step; memory is bounded for any input.
    static constexpr std::int64_t kFinestStep = 10;  // ms
    static constexpr std::size_t kMaxValues = std::size_t{1} << 20;

    // The sum over channels of the mean squares of the next kFinestStep.
    void add(double energy);
    // Number of steps that are not decoded. They do not count as silence.
    void skip(std::int64_t steps);

    // Over all decoded audio; 0 if there was none.
    [[nodiscard]] double mean() const;

    // Momentary levels are means over 400 ms, or over everything where that is shorter.
    //
    // Where the momentary level falls below `energy` for good: at the end of the last step with
    // that energy in the last 400 ms with that mean. Nothing when it never reaches it, or where
    // no audio was decoded.
    [[nodiscard]] std::optional<std::int64_t> last_fall(double energy) const;
    // The highest momentary level that begins and ends in `within`; 0 where there is none.
    [[nodiscard]] double loudest(const TimeRange& within) const;

    // Ranges longer than `shortest` (ms) in which every step stays below `energy`, inside of
    // `within`, at most `most` of them; `count` is the number of all.
    struct Quiet {
        std::vector<TimeRange> ranges;
        std::int64_t count = 0;
    };
    [[nodiscard]] Quiet quiet(double energy, const TimeRange& within, std::int64_t shortest,
                              std::size_t most) const;

private:
    void append(float value);
    void coarsen();
    [[nodiscard]] std::size_t window() const;
    [[nodiscard]] double mean(std::size_t first, std::size_t count) const;

    std::vector<float> values_;
    std::int64_t step_ = kFinestStep;
    // A value that is not complete while steps are coarser.
    double part_ = 0;
    std::int64_t part_steps_ = 0;

    double heard_energy_ = 0;
    std::int64_t heard_steps_ = 0;
};

}  // namespace brindle::host
