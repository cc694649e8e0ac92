// Measures samples as they arrive: passes blocks to the meter and the curves, and evaluates them at
// the end.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "clipping.h"
#include "level_curve.h"
#include "listening.h"
#include "loudness_meter.h"
#include "loudness_range.h"
#include "sound_edges.h"
#include "stream_format.h"

namespace brindle::host {

class Listener {
public:
    // `most_milliseconds`: the maximum duration.
    Listener(const StreamFormat& format, MeterMode mode, std::int64_t most_milliseconds);

    // Samples of all channels in turn.
    void add(std::span<const float> samples);
    // Number of samples of each channel that are skipped.
    void skip(std::int64_t samples);

    // All but what is known of the frames. `gain_loudness`: what the file itself says (LUFS), which
    // then is what thresholds are relative to.
    [[nodiscard]] Listening conclude(const ListenOptions& options,
                                     std::optional<double> gain_loudness);

private:
    static constexpr std::int64_t kBlock = LevelCurve::kFinestStep;  // ms

    [[nodiscard]] std::int64_t millisecond_of(std::int64_t sample) const;
    // The first sample of a millisecond.
    [[nodiscard]] std::int64_t sample_at(std::int64_t millisecond) const;
    void begin_block();
    void end_block();
    void add_to_milliseconds(std::span<const float> samples);
    void end_millisecond();
    void find_points(double reference, const ListenOptions& options, Listening& heard) const;
    [[nodiscard]] EndStyle end_style(const TimeRange& sound) const;
    [[nodiscard]] ChannelBalance balance() const;

    struct Sums {
        std::array<double, 2> squares{};
        double products = 0;  // of both channels
        std::int64_t samples = 0;
    };

    const StreamFormat format_;
    const std::size_t channels_;
    const MeterMode mode_;
    LoudnessMeter meter_;
    LoudnessRange range_;
    SoundEdges edges_;
    LevelCurve curve_;
    ClippedRuns clipped_;
    bool is_whole_ = true;

    std::int64_t sample_ = 0;  // of each channel, the next
    std::int64_t block_ = 0;   // ms at which the block begins
    std::int64_t block_end_ = 0;
    std::vector<double> block_energies_;  // of its milliseconds
    std::int64_t millisecond_end_ = 0;
    Sums millisecond_;
    Sums all_;
};

}  // namespace brindle::host
