// Loudness by EBU R 128 (ITU-R BS.1770), of blocks of samples as they arrive.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ebur128.h>
#include <memory>
#include <optional>
#include <span>

namespace brindle::host {

enum class MeterMode {
    Whole,
    Quick,  // no true peak, which costs six times the rest
};

// Longer sound is not kept block by block but counted by levels of 0.1 LU, in constant memory; the
// error is then at most 0.05 LU.
inline constexpr std::int64_t kMaxExactBlocks = 432'000;  // of 100 ms, 12 hours

class LoudnessMeter {
public:
    // `most_blocks`: the maximum duration, in blocks of 100 ms. Raises std::bad_alloc.
    LoudnessMeter(int channels, std::int32_t frequency, MeterMode mode, std::int64_t most_blocks);

    // Samples of all channels in turn.
    void add(std::span<const float> samples);

    // Of the latest samples, weighted: the sum over channels of the mean squares of that many
    // milliseconds, at most 400.
    [[nodiscard]] double latest_energy(unsigned long milliseconds) const;
    // The largest sample of all channels, of the latest call of add().
    [[nodiscard]] double latest_peak() const;

    // Nothing when no 400 ms are above -70 LUFS.
    [[nodiscard]] std::optional<double> integrated() const;
    // dBTP. Nothing for digital silence, or when quick.
    [[nodiscard]] std::optional<double> true_peak() const;
    // The largest sample; full scale is 1.
    [[nodiscard]] double sample_peak() const;

private:
    struct Deleter {
        void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
    };

    int channels_;
    MeterMode mode_;
    std::unique_ptr<ebur128_state, Deleter> state_;
};

}  // namespace brindle::host
