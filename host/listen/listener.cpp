#include "listener.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "loudness_units.h"

namespace brindle::host {

namespace {

constexpr std::int64_t kMillisecondsPerSecond = 1'000;
constexpr std::int64_t kMeterBlock = 100;  // ms

// Weighting raises no tone by more than 4 LU.
constexpr double kMaxWeight = 2.6;

// The window over which a Layer III transform spreads what is in it; the filters of the other
// layers spread it over less.
constexpr std::int64_t kTransformWindow = 1'152;  // samples

double below(double energy, double units) {
    return energy * std::pow(10.0, -units / 10.0);
}

}  // namespace

Listener::Listener(const StreamFormat& format, MeterMode mode, std::int64_t most_milliseconds)
    : format_(format),
      channels_(static_cast<std::size_t>(format.channels)),
      mode_(mode),
      meter_(format.channels, format.frequency, mode, most_milliseconds / kMeterBlock),
      clipped_(format.channels) {
    begin_block();
}

std::int64_t Listener::millisecond_of(std::int64_t sample) const {
    return sample * kMillisecondsPerSecond / format_.frequency;
}

std::int64_t Listener::sample_at(std::int64_t millisecond) const {
    return (millisecond * format_.frequency + kMillisecondsPerSecond - 1) / kMillisecondsPerSecond;
}

void Listener::begin_block() {
    const std::int64_t millisecond = millisecond_of(sample_);
    block_ = millisecond / kBlock * kBlock;
    block_end_ = sample_at(block_ + kBlock);
    millisecond_end_ = sample_at(millisecond + 1);
}

void Listener::add(std::span<const float> samples) {
    while (!samples.empty()) {
        const auto room = static_cast<std::size_t>(block_end_ - sample_) * channels_;
        const auto part = samples.first(std::min(samples.size(), room));
        samples = samples.subspan(part.size());
        meter_.add(part);
        if (meter_.latest_peak() >= kFullScale) {
            clipped_.add(part, sample_);
        } else {
            clipped_.add_unclipped();
        }
        add_to_milliseconds(part);
        if (sample_ == block_end_) {
            end_block();
            begin_block();
        }
    }
}

void Listener::add_to_milliseconds(std::span<const float> samples) {
    while (!samples.empty()) {
        const auto room = static_cast<std::size_t>(millisecond_end_ - sample_) * channels_;
        const auto part = samples.first(std::min(samples.size(), room));
        samples = samples.subspan(part.size());
        // Floats are enough for a millisecond.
        float left = 0;
        float right = 0;
        float products = 0;
        if (channels_ == 2) {
            for (std::size_t place = 0; place < part.size(); place += 2) {
                left += part[place] * part[place];
                right += part[place + 1] * part[place + 1];
                products += part[place] * part[place + 1];
            }
        } else {
            for (const float sample : part) {
                left += sample * sample;
            }
        }
        millisecond_.squares[0] += left;
        millisecond_.squares[1] += right;
        millisecond_.products += products;
        const auto count = static_cast<std::int64_t>(part.size() / channels_);
        millisecond_.samples += count;
        sample_ += count;
        if (sample_ == millisecond_end_) {
            end_millisecond();
        }
    }
}

void Listener::end_millisecond() {
    millisecond_end_ = sample_at(millisecond_of(sample_) + 1);
    if (millisecond_.samples == 0) {
        return;
    }
    block_energies_.push_back((millisecond_.squares[0] + millisecond_.squares[1]) /
                              static_cast<double>(millisecond_.samples));
    all_.squares[0] += millisecond_.squares[0];
    all_.squares[1] += millisecond_.squares[1];
    all_.products += millisecond_.products;
    all_.samples += millisecond_.samples;
    millisecond_ = {};
}

// Levels are weighted as loudness is, so that rumble does not count as sound. The filter that
// weights goes on ringing after a sound for some milliseconds, in which there is nothing to weight.
void Listener::end_block() {
    const double weighted = meter_.latest_energy(kBlock);
    range_.add(weighted);
    double loudest = 0;
    std::int64_t millisecond =
        millisecond_of(sample_ - 1) + 1 - static_cast<std::int64_t>(block_energies_.size());
    for (const double energy : block_energies_) {
        edges_.add(millisecond, std::min(weighted, kMaxWeight * energy));
        loudest = std::max(loudest, energy);
        ++millisecond;
    }
    curve_.add(std::min(weighted, kMaxWeight * loudest));
    block_energies_.clear();
}

void Listener::skip(std::int64_t samples) {
    end_millisecond();
    const std::int64_t heard = block_energies_.empty() ? block_ : block_ + kBlock;
    if (!block_energies_.empty()) {
        end_block();
    }
    sample_ += samples;
    begin_block();
    curve_.skip((block_ - heard) / kBlock);
    is_whole_ = false;
}

Listening Listener::conclude(const ListenOptions& options, std::optional<double> gain_loudness) {
    end_millisecond();
    if (!block_energies_.empty()) {
        end_block();
    }
    Listening heard;
    heard.frequency = format_.frequency;
    heard.channels = format_.channels;
    heard.is_whole = is_whole_;
    heard.range = mode_ == MeterMode::Whole ? range_.range() : std::nullopt;
    heard.true_peak = meter_.true_peak();
    heard.sample_peak = meter_.sample_peak();
    heard.clipped_runs = clipped_.count();
    for (const std::int64_t sample : clipped_.places()) {
        heard.clipped_at.push_back(millisecond_of(sample));
    }
    if (channels_ == 2) {
        heard.balance = balance();
    }
    heard.reference = gain_loudness ? Reference::ReplayGain
                      : is_whole_   ? Reference::Whole
                                    : Reference::Partial;
    heard.loudness = gain_loudness ? gain_loudness : meter_.integrated();
    // A spot of less than 400 ms has no loudness by the book; what is softer than its gate of
    // -70 LUFS is no sound.
    constexpr double kGate = -70;
    const double reference = heard.loudness.value_or(loudness_of(curve_.mean()));
    if (heard.loudness || reference >= kGate) {
        find_points(reference, options, heard);
    }
    return heard;
}

void Listener::find_points(double reference, const ListenOptions& options, Listening& heard) const {
    constexpr std::size_t kMaxSilences = 1'000;
    const double threshold = reference - options.sound_range;
    const std::int64_t smear = millisecond_of(kTransformWindow) + 1;
    heard.sound = edges_.sound(threshold, smear);
    if (!heard.sound) {
        return;
    }
    auto silences =
        curve_.quiet(energy_of(threshold), *heard.sound, options.shortest_silence, kMaxSilences);
    heard.silences = std::move(silences.ranges);
    heard.silence_count = silences.count;
    if (const auto fall = curve_.last_fall(energy_of(reference - options.overlap_range))) {
        heard.next_start = std::clamp(*fall, heard.sound->begin, heard.sound->end);
    }
    heard.end = end_style(*heard.sound);
}

// It fades when the level takes its time on the way down: from 4 to 12 LU below the loudest of the
// last twelve seconds, and from there to the end. Reverberation of four seconds falls by these 8 LU
// in half a second, a fade of three seconds in more than one; the last word of a sentence may come
// long after the loudest, but ends at once.
EndStyle Listener::end_style(const TimeRange& sound) const {
    constexpr std::int64_t kLastSeconds = 12'000;
    constexpr std::int64_t kShortestFall = 800;
    constexpr std::int64_t kShortestTail = 500;
    const double loudest = curve_.loudest({sound.end - kLastSeconds, sound.end});
    const auto begin = curve_.last_fall(below(loudest, 4));
    const auto end = curve_.last_fall(below(loudest, 12));
    const bool fades = loudest > 0 && begin && end && *end - *begin > kShortestFall &&
                       sound.end - *end > kShortestTail;
    return fades ? EndStyle::Fade : EndStyle::Cold;
}

ChannelBalance Listener::balance() const {
    ChannelBalance balance;
    for (std::size_t channel = 0; channel < 2 && all_.samples > 0; ++channel) {
        balance.energy.at(channel) = all_.squares.at(channel) / static_cast<double>(all_.samples);
    }
    const double product = std::sqrt(all_.squares[0] * all_.squares[1]);
    balance.correlation = product > 0 ? all_.products / product : 0;
    return balance;
}

}  // namespace brindle::host
