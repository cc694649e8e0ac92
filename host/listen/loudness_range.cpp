#include "loudness_range.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "loudness_units.h"

namespace brindle::host {

namespace {

constexpr std::int64_t kStepsPerTenth = 10;
constexpr double kHighest = 100;  // LUFS, far above full scale

}  // namespace

LoudnessRange::LoudnessRange()
    : counts_(static_cast<std::size_t>((kHighest - kGate) * kLevelsPerUnit)) {}

void LoudnessRange::add(double energy) {
    const auto tenth = static_cast<std::size_t>(steps_ / kStepsPerTenth) % tenths_.size();
    tenths_.at(tenth) = steps_ % kStepsPerTenth == 0 ? energy : tenths_.at(tenth) + energy;
    ++steps_;
    const auto window = static_cast<std::int64_t>(tenths_.size()) * kStepsPerTenth;
    if (steps_ % kStepsPerTenth == 0 && steps_ >= window) {
        count(std::accumulate(tenths_.begin(), tenths_.end(), 0.0) / static_cast<double>(window));
    }
}

void LoudnessRange::count(double energy) {
    const double loudness = loudness_of(energy);
    if (!(loudness >= kGate)) {
        return;
    }
    const double level =
        std::min((loudness - kGate) * kLevelsPerUnit, static_cast<double>(counts_.size() - 1));
    ++counts_[static_cast<std::size_t>(level)];
    counted_energy_ += energy;
    ++counted_;
}

std::optional<double> LoudnessRange::range() const {
    constexpr double kRelativeGate = 20;
    if (counted_ == 0) {
        return std::nullopt;
    }
    const double gate =
        std::clamp(loudness_of(counted_energy_ / static_cast<double>(counted_)) - kRelativeGate,
                   kGate, kHighest - 1);
    const auto first = static_cast<std::size_t>((gate - kGate) * kLevelsPerUnit);
    const std::int64_t all = std::accumulate(counts_.begin() + static_cast<std::ptrdiff_t>(first),
                                             counts_.end(), std::int64_t{0});
    return percentile(first, all, 0.95) - percentile(first, all, 0.1);
}

double LoudnessRange::percentile(std::size_t first, std::int64_t all, double part) const {
    std::int64_t below = std::llround(part * static_cast<double>(all - 1));
    std::size_t level = first;
    while (level + 1 < counts_.size() && below >= counts_[level]) {
        below -= counts_[level];
        ++level;
    }
    return kGate + static_cast<double>(level) / kLevelsPerUnit;
}

}  // namespace brindle::host
