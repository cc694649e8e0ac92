#include "loudness_meter.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "loudness_units.h"

namespace brindle::host {

namespace {

int mode_flags(MeterMode mode, std::int64_t most_blocks) {
    const int flags = mode == MeterMode::Whole ? EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK
                                               : EBUR128_MODE_I | EBUR128_MODE_SAMPLE_PEAK;
    return most_blocks > kMaxExactBlocks ? flags | EBUR128_MODE_HISTOGRAM : flags;
}

}  // namespace

LoudnessMeter::LoudnessMeter(int channels, std::int32_t frequency, MeterMode mode,
                             std::int64_t most_blocks)
    : channels_(channels),
      mode_(mode),
      state_(ebur128_init(static_cast<unsigned>(channels), static_cast<unsigned long>(frequency),
                          mode_flags(mode, most_blocks))) {
    if (!state_) {
        throw std::bad_alloc();
    }
}

void LoudnessMeter::add(std::span<const float> samples) {
    if (ebur128_add_frames_float(state_.get(), samples.data(),
                                 samples.size() / static_cast<std::size_t>(channels_)) !=
        EBUR128_SUCCESS) {
        throw std::bad_alloc();
    }
}

double LoudnessMeter::latest_energy(unsigned long milliseconds) const {
    double loudness = 0;
    ebur128_loudness_window(state_.get(), milliseconds, &loudness);
    return std::isfinite(loudness) ? energy_of(loudness) : 0;
}

double LoudnessMeter::latest_peak() const {
    double peak = 0;
    for (int channel = 0; channel < channels_; ++channel) {
        double value = 0;
        ebur128_prev_sample_peak(state_.get(), static_cast<unsigned>(channel), &value);
        peak = std::max(peak, value);
    }
    return peak;
}

std::optional<double> LoudnessMeter::integrated() const {
    double loudness = 0;
    ebur128_loudness_global(state_.get(), &loudness);
    return std::isfinite(loudness) ? std::optional(loudness) : std::nullopt;
}

std::optional<double> LoudnessMeter::true_peak() const {
    double peak = 0;
    for (int channel = 0; mode_ == MeterMode::Whole && channel < channels_; ++channel) {
        double value = 0;
        ebur128_true_peak(state_.get(), static_cast<unsigned>(channel), &value);
        peak = std::max(peak, value);
    }
    return peak > 0 ? std::optional(20.0 * std::log10(peak)) : std::nullopt;
}

double LoudnessMeter::sample_peak() const {
    double peak = 0;
    for (int channel = 0; channel < channels_; ++channel) {
        double value = 0;
        ebur128_sample_peak(state_.get(), static_cast<unsigned>(channel), &value);
        peak = std::max(peak, value);
    }
    return peak;
}

}  // namespace brindle::host
