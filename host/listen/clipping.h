// Runs of samples at full scale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace brindle::host {

// The largest sample of 16 bits; decoded samples may be larger.
inline constexpr float kFullScale = 32'767.0F / 32'768.0F;

class ClippedRuns {
public:
    static constexpr std::size_t kMaxPlaces = 16;

    explicit ClippedRuns(int channels) : lengths_(static_cast<std::size_t>(channels)) {}

    // Samples of all channels in turn; the first is at `sample`.
    void add(std::span<const float> samples, std::int64_t sample);
    // As add() for samples that are all below full scale.
    void add_unclipped();

    // Runs of 8 or more samples of one channel, and where the first of them are.
    [[nodiscard]] std::int64_t count() const { return count_; }
    [[nodiscard]] const std::vector<std::int64_t>& places() const { return places_; }

private:
    std::vector<std::int64_t> lengths_;  // of each channel's current run
    std::int64_t count_ = 0;
    std::vector<std::int64_t> places_;
};

}  // namespace brindle::host
