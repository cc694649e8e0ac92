// The chains from the frames directly after the position of a pass from a file's end.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "mpeg/block_walk.h"
#include "mpeg/frame_header.h"

namespace brindle {

// A chain counts as a stream when it is long and fast enough.
inline constexpr std::int32_t kMaxRejectedFrames = 10;
inline constexpr std::int32_t kMaxRejectedAverage = 20;  // kbit/s

[[nodiscard]] constexpr bool is_accepted(const WalkedStream& stream) noexcept {
    return stream.frames > kMaxRejectedFrames &&
           stream.bit_rate_sum > std::int64_t{kMaxRejectedAverage} * stream.frames;
}

// A number of frames, and by how much their bit rates together exceed what is rejected, in one
// word: 2^32 times the one plus the other. A file can be made of headers, so that each fourth byte
// has such a sum to be taken and judged.
class ChainSum {
public:
    constexpr ChainSum() = default;
    explicit constexpr ChainSum(std::int32_t bit_rate) noexcept
        : sum_(kOneFrame - kMaxRejectedAverage + bit_rate) {}

    constexpr ChainSum& operator+=(ChainSum other) noexcept {
        sum_ += other.sum_;
        return *this;
    }
    [[nodiscard]] constexpr bool is_accepted() const noexcept {
        return excess() > 0 && sum_ >= (kMaxRejectedFrames + 1) * kOneFrame;
    }
    [[nodiscard]] constexpr WalkedStream stream() const noexcept {
        const auto frames = static_cast<std::int32_t>((sum_ - excess()) / kOneFrame);
        return {frames, excess() + kMaxRejectedAverage * frames};
    }

private:
    static constexpr std::int64_t kOneFrame = std::int64_t{1} << 32;

    // Fits: no frame has fewer bytes than its bit rate, nor than what is rejected.
    static_assert(kMaxRejectedAverage < kShortestFrame);
    [[nodiscard]] constexpr std::int32_t excess() const noexcept {
        return static_cast<std::int32_t>(sum_);
    }

    std::int64_t sum_ = 0;
};

// A frame's successor is never farther than the longest frame, so a ring of that many places is all
// that a pass needs to know.
class ChainTails {
public:
    explicit ChainTails(std::int64_t file_length) : file_length_(file_length) {}

    // The chain from a header at `position`; empty when it is none, or when its frame is cut. No
    // earlier call had an earlier position.
    ChainSum add(std::int64_t position, std::uint32_t bits) noexcept {
        // Of a header, the bits that must be ones are 0 in `difference`. So is a reserved emphasis.
        const std::uint32_t difference = bits ^ (kSyncMask | kReservedEmphasis);
        if (difference > ~kSyncMask || (difference & kEmphasisMask) == 0) {
            return {};
        }
        const FrameShape shape = frame_shape(bits);
        const std::int64_t length = shape.length_of(bits);
        const std::int64_t next = position + length;
        if (shape.length == 0 || next > file_length_) {
            return {};
        }
        // Its position, and what it has in common with the others of its stream.
        const std::int64_t frame = position * kOnePlace + (bits & kStreamMask);
        ChainSum chain(shape.bit_rate_by_8 * 8);
        const Entry& follower = entry(next);
        if (follower.frame == frame + length * kOnePlace) {
            chain += follower.chain;
        }
        entry(position) = {frame, chain};
        return chain;
    }

private:
    struct Entry {
        std::int64_t frame = 0;  // no frame has this
        ChainSum chain;
    };
    static constexpr std::int64_t kOnePlace = std::int64_t{1} << 32;
    static constexpr std::size_t kRing = 4'096;
    static_assert(kRing > kLongestFrame);

    [[nodiscard]] Entry& entry(std::int64_t position) noexcept {
        return (*entries_)[static_cast<std::size_t>(position) % kRing];
    }

    std::int64_t file_length_;
    std::unique_ptr<std::array<Entry, kRing>> entries_ =
        std::make_unique<std::array<Entry, kRing>>();
};

}  // namespace brindle
