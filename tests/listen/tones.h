// Sound for the tests of loudness: stereo tones, one after the other.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <vector>

namespace brindle::test {

// Interleaved samples of two channels that say the same.
class Stereo {
public:
    explicit Stereo(std::int32_t frequency = 48'000) : frequency_(frequency) {}

    // A tone whose peaks are this many dB below full scale. Tones that follow each other go on in
    // phase.
    Stereo& tone(double seconds, double dbfs, double hertz = 1'000) {
        const double amplitude = std::pow(10.0, dbfs / 20);
        const double step = 2 * std::numbers::pi * hertz / frequency_;
        for (std::int64_t left = count(seconds); left > 0; --left) {
            put(amplitude * std::sin(phase_));
            phase_ = std::fmod(phase_ + step, 2 * std::numbers::pi);
        }
        return *this;
    }
    // A tone whose amplitude goes from one level to the other in a straight line.
    Stereo& fade(double seconds, double from_amplitude, double to_amplitude) {
        const std::int64_t all = count(seconds);
        for (std::int64_t place = 0; place < all; ++place) {
            const double part = static_cast<double>(place) / static_cast<double>(all);
            put((from_amplitude + (to_amplitude - from_amplitude) * part) * std::sin(phase_));
            phase_ =
                std::fmod(phase_ + 2 * std::numbers::pi * 1'000 / frequency_, 2 * std::numbers::pi);
        }
        return *this;
    }
    Stereo& silence(double seconds) {
        samples_.resize(samples_.size() + 2 * static_cast<std::size_t>(count(seconds)));
        return *this;
    }
    // The same noise in both channels, of so much mean level; always the same numbers.
    Stereo& noise(double seconds, double rms_dbfs) {
        const double range = std::pow(10.0, rms_dbfs / 20) * std::sqrt(3.0);
        for (std::int64_t left = count(seconds); left > 0; --left) {
            state_ = state_ * 6'364'136'223'846'793'005U + 1'442'695'040'888'963'407U;
            const double unit = static_cast<double>(state_ >> 11) / 9'007'199'254'740'992.0;
            put(range * (2 * unit - 1));
        }
        return *this;
    }
    // Adds the samples of another sound to these.
    Stereo& under(const Stereo& other) {
        for (std::size_t place = 0; place < samples_.size(); ++place) {
            samples_[place] += other.samples_.at(place);
        }
        return *this;
    }
    void put(double sample) {
        samples_.push_back(static_cast<float>(sample));
        samples_.push_back(static_cast<float>(sample));
    }

    [[nodiscard]] const std::vector<float>& samples() const { return samples_; }
    [[nodiscard]] std::vector<float>& samples() { return samples_; }
    [[nodiscard]] std::int32_t frequency() const { return frequency_; }

private:
    [[nodiscard]] std::int64_t count(double seconds) const {
        return std::llround(seconds * frequency_);
    }

    std::int32_t frequency_;
    double phase_ = 0;
    std::uint64_t state_ = 1;
    std::vector<float> samples_;
};

}  // namespace brindle::test
