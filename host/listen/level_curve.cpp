#include "level_curve.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace brindle::host {

namespace {

// Above every threshold, and so is every mean that includes it.
constexpr float kUnheard = std::numeric_limits<float>::infinity();

constexpr std::int64_t kMomentary = 400;  // ms

}  // namespace

void LevelCurve::add(double energy) {
    heard_energy_ += energy;
    ++heard_steps_;
    append(static_cast<float>(energy));
}

void LevelCurve::skip(std::int64_t steps) {
    for (; steps > 0; --steps) {
        append(kUnheard);
    }
}

void LevelCurve::append(float value) {
    part_ += value;
    ++part_steps_;
    if (part_steps_ * kFinestStep < step_) {
        return;
    }
    values_.push_back(static_cast<float>(part_ / static_cast<double>(part_steps_)));
    part_ = 0;
    part_steps_ = 0;
    if (values_.size() == kMaxValues) {
        coarsen();
    }
}

void LevelCurve::coarsen() {
    for (std::size_t pair = 0; pair < kMaxValues / 2; ++pair) {
        values_[pair] = (values_[2 * pair] + values_[2 * pair + 1]) / 2;
    }
    values_.resize(kMaxValues / 2);
    step_ *= 2;
}

double LevelCurve::mean() const {
    return heard_steps_ > 0 ? heard_energy_ / static_cast<double>(heard_steps_) : 0;
}

std::size_t LevelCurve::window() const {
    const auto steps = static_cast<std::size_t>(std::max<std::int64_t>(kMomentary / step_, 1));
    return std::min(steps, values_.size());
}

double LevelCurve::mean(std::size_t first, std::size_t count) const {
    double sum = 0;
    for (std::size_t place = first; place < first + count; ++place) {
        sum += values_[place];
    }
    return sum / static_cast<double>(count);
}

std::optional<std::int64_t> LevelCurve::last_fall(double energy) const {
    const std::size_t steps = window();
    if (steps == 0) {
        return std::nullopt;
    }
    for (std::size_t end = values_.size(); end >= steps; --end) {
        const double level = mean(end - steps, steps);
        if (std::isinf(level)) {
            return std::nullopt;
        }
        if (level < energy) {
            continue;
        }
        std::size_t last = end - 1;
        while (last > end - steps && values_[last] < energy) {
            --last;
        }
        return static_cast<std::int64_t>(last + 1) * step_;
    }
    return std::nullopt;
}

double LevelCurve::loudest(const TimeRange& within) const {
    const std::size_t steps = window();
    const auto end = std::min(static_cast<std::size_t>(within.end / step_), values_.size());
    double loudest = 0;
    for (auto first = static_cast<std::size_t>(std::max<std::int64_t>(within.begin, 0) / step_);
         steps > 0 && first + steps <= end; ++first) {
        const double level = mean(first, steps);
        loudest = std::isinf(level) ? loudest : std::max(loudest, level);
    }
    return loudest;
}

LevelCurve::Quiet LevelCurve::quiet(double energy, const TimeRange& within, std::int64_t shortest,
                                    std::size_t most) const {
    Quiet quiet;
    const auto end = std::min(static_cast<std::size_t>(within.end / step_), values_.size());
    auto begin = static_cast<std::size_t>((within.begin + step_ - 1) / step_);
    for (std::size_t place = begin; place <= end; ++place) {
        if (place < end && values_[place] < energy) {
            continue;
        }
        const auto length = static_cast<std::int64_t>(place - begin) * step_;
        if (place > begin && length > shortest) {
            ++quiet.count;
            if (quiet.ranges.size() < most) {
                quiet.ranges.push_back({static_cast<std::int64_t>(begin) * step_,
                                        static_cast<std::int64_t>(place) * step_});
            }
        }
        begin = place + 1;
    }
    return quiet;
}

}  // namespace brindle::host
