// From frame to frame through a piece of a file in memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "mpeg/frame_header.h"

namespace brindle {

struct WalkedStream {
    std::int32_t frames = 0;
    std::int32_t bit_rate_sum = 0;  // kbit/s; never more than the file has bytes
};

// What headers of one stream have in common, and for which the walk below is compiled: all that the
// analyser compares, or what decides how long a frame plays.
inline constexpr std::uint32_t kSyncAndKindMask = kSyncMask | kKindMask;

// What the third byte of a header tells of a frame, in one stream: bit rate and padding stand
// there, and nothing else that the frame's length depends on. A walk cannot look at the next header
// before it knows this length, so each step to get it counts.
//
// Headers of the stream have the bits of `common` as its first header has them.
template <std::uint32_t common>
class FrameLengthTable {
    static_assert((common & kSyncAndKindMask) == kSyncAndKindMask);

public:
    explicit FrameLengthTable(std::uint32_t first_bits);

    // Whether it is a valid header that can belong to the stream.
    [[nodiscard]] bool has(const std::uint8_t* header) const noexcept {
        const std::uint32_t bits = header_bits(header);
        if constexpr ((common & kEmphasisMask) != kEmphasisMask) {
            if ((bits & kEmphasisMask) == kReservedEmphasis) {
                return false;
            }
        }
        return ((bits ^ first_bits_) & common) == 0 && length(header) != 0;
    }
    // 0 for a header with a reserved bit rate.
    [[nodiscard]] std::uint32_t length(const std::uint8_t* header) const noexcept {
        return lengths_[header[2]];
    }
    [[nodiscard]] std::int32_t bit_rate(const std::uint8_t* header) const noexcept {
        return bit_rates_[header[2]];
    }

private:
    std::uint32_t first_bits_;
    std::array<std::uint16_t, 256> lengths_{};
    std::array<std::uint16_t, 256> bit_rates_{};
};

// Goes through the frames of one block, the first of which is at `offset`, and adds them to
// `stream`. True if the chain continues after the block; `offset` is then that of the next
// frame, else where the chain broke. A frame may end `left_of_file` bytes after the block's
// beginning at most.
template <std::uint32_t common>
bool walk_block(std::span<const std::uint8_t> block, std::size_t left_of_file,
                const FrameLengthTable<common>& frames, WalkedStream& stream, std::size_t& offset);

extern template class FrameLengthTable<kStreamMask>;
extern template class FrameLengthTable<kSyncAndKindMask>;
extern template bool walk_block(std::span<const std::uint8_t>, std::size_t,
                                const FrameLengthTable<kStreamMask>&, WalkedStream&, std::size_t&);
extern template bool walk_block(std::span<const std::uint8_t>, std::size_t,
                                const FrameLengthTable<kSyncAndKindMask>&, WalkedStream&,
                                std::size_t&);

}  // namespace brindle
