#include "sound_edges.h"

#include <algorithm>
#include <cmath>

#include "loudness_units.h"

namespace brindle::host {

SoundEdges::SoundEdges() {
    last_.fill(-1);
}

std::optional<std::size_t> SoundEdges::level_of(double loudness) {
    if (!(loudness >= kLowest)) {
        return std::nullopt;
    }
    const double level = std::floor((loudness - kLowest) * kStepsPerUnit);
    return static_cast<std::size_t>(std::min(level, static_cast<double>(kLevels - 1)));
}

void SoundEdges::add(std::int64_t millisecond, double energy) {
    const auto level = level_of(loudness_of(energy));
    if (!level) {
        return;
    }
    for (; reached_ <= *level; ++reached_) {
        first_.at(reached_) = millisecond;
    }
    last_.at(*level) = millisecond;
}

std::optional<TimeRange> SoundEdges::sound(double threshold, std::int64_t smear) const {
    constexpr std::size_t kRise = std::size_t{20} * kStepsPerUnit;
    constexpr std::size_t kFall = std::size_t{10} * kStepsPerUnit;
    const std::size_t lowest = level_of(threshold).value_or(0);
    if (lowest >= reached_) {
        return std::nullopt;
    }
    // The steepest edge leads to the loudest level within the smear.
    const auto edge_level = [&](std::size_t loudest, std::size_t step) {
        return std::max(lowest, loudest - std::min(loudest, step));
    };
    std::size_t loudest = lowest;
    while (loudest + 1 < reached_ && first_.at(loudest + 1) <= first_.at(lowest) + smear) {
        ++loudest;
    }
    const std::int64_t begin = first_.at(edge_level(loudest, kRise));

    const auto last_from = [&](std::size_t level) {
        return *std::max_element(last_.begin() + static_cast<std::ptrdiff_t>(level),
                                 last_.begin() + static_cast<std::ptrdiff_t>(reached_));
    };
    const std::int64_t end = last_from(lowest);
    loudest = reached_ - 1;
    for (std::int64_t last = last_.at(loudest); last < end - smear;
         last = std::max(last, last_.at(loudest))) {
        --loudest;
    }
    return TimeRange{begin, last_from(edge_level(loudest, kFall)) + 1};
}

}  // namespace brindle::host
