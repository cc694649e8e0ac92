#include "clipping.h"

#include <algorithm>
#include <cmath>

namespace brindle::host {

void ClippedRuns::add(std::span<const float> samples, std::int64_t sample) {
    constexpr std::int64_t kShortest = 8;
    const std::size_t channels = lengths_.size();
    for (std::size_t place = 0; place < samples.size(); ++place) {
        std::int64_t& length = lengths_[place % channels];
        length = std::abs(samples[place]) >= kFullScale ? length + 1 : 0;
        if (length == kShortest) {
            ++count_;
            if (places_.size() < kMaxPlaces) {
                places_.push_back(sample + static_cast<std::int64_t>(place / channels) + 1 -
                                  kShortest);
            }
        }
    }
}

void ClippedRuns::add_unclipped() {
    std::fill(lengths_.begin(), lengths_.end(), 0);
}

}  // namespace brindle::host
