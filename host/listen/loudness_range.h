// Loudness range by EBU Tech 3342: how far apart soft and loud passages are.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace brindle::host {

// Short-term levels (3 s) are sampled ten times a second and counted in steps of 0.01 LU, so
// memory does not depend on the length. The meter's own range is sampled once a second, which
// differs by up to 2 LU in 40 s of sound.
class LoudnessRange {
public:
    static constexpr std::int64_t kStep = 10;  // ms

    LoudnessRange();

    // The sum over channels of the weighted mean squares of the next kStep.
    void add(double energy);

    // LU. Nothing when no 3 s are above -70 LUFS.
    [[nodiscard]] std::optional<double> range() const;

private:
    static constexpr double kGate = -70;  // LUFS
    static constexpr int kLevelsPerUnit = 100;

    void count(double energy);
    // The level below which this part of the levels counted from `first` is.
    [[nodiscard]] double percentile(std::size_t first, std::int64_t all, double part) const;

    std::array<double, 30> tenths_{};  // sums of the latest 3 s
    std::int64_t steps_ = 0;
    std::vector<std::int64_t> counts_;  // by level, from the gate up
    double counted_energy_ = 0;
    std::int64_t counted_ = 0;
};

}  // namespace brindle::host
