#include "mpeg/full_scan.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

#include "mpeg/frame_header.h"
#include "mpeg/frame_trace.h"
#include "mpeg/pacing.h"

namespace brindle {
namespace {

constexpr double kProgressSeconds = 0.5;
constexpr std::int32_t kMostRejectedFrames = 10;
constexpr std::int32_t kMostRejectedAverage = 20;  // kbit/s
constexpr std::uint8_t kSyncByte = 0xFF;

bool accepted(const WalkedStream& stream) {
    return stream.frames > kMostRejectedFrames &&
           stream.bit_rate_sum > std::int64_t{kMostRejectedAverage} * stream.frames;
}

// What the third byte of a header tells of a frame, in one stream: bit rate and padding stand
// there, and nothing else that the frame's length depends on. A walk cannot look at the next header
// before it knows this length, so each step on the way to it counts.
class StreamFrames {
public:
    explicit StreamFrames(std::uint32_t first_bits) {
        constexpr std::uint32_t kThirdByte = 0xFF00;
        for (std::uint32_t byte = 0; byte < lengths_.size(); ++byte) {
            const std::uint32_t bits = (first_bits & ~kThirdByte) | byte << 8U;
            const FrameShape& shape = frame_shape(bits);
            lengths_[byte] = static_cast<std::uint16_t>(shape.length_of(bits));
            bit_rates_[byte] = static_cast<std::uint16_t>(shape.bit_rate_by_8 * 8);
        }
    }

    // 0 for a header with a reserved bit rate.
    [[nodiscard]] std::uint32_t length(const std::uint8_t* header) const noexcept {
        return lengths_[header[2]];
    }
    [[nodiscard]] std::int32_t bit_rate(const std::uint8_t* header) const noexcept {
        return bit_rates_[header[2]];
    }

private:
    std::array<std::uint16_t, 256> lengths_{};
    std::array<std::uint16_t, 256> bit_rates_{};
};

// Goes through the frames of one block from its first byte on. True when the chain goes on behind
// the block; `offset` is then where the next frame stands, else where the chain broke.
bool walk_block(std::span<const std::uint8_t> block, std::size_t left_of_file,
                std::uint32_t first_bits, const StreamFrames& frames, WalkedStream& stream,
                std::size_t& offset) {
    while (offset + kHeaderBytes <= block.size()) {
        const std::uint8_t* const header = block.data() + offset;
        const std::size_t length = frames.length(header);
        if (!headers_agree(first_bits, header_bits(header)) || length == 0 ||
            offset + length > left_of_file) {
            return false;
        }
        ++stream.frames;
        stream.bit_rate_sum += frames.bit_rate(header);
        offset += length;
    }
    return true;
}

// Eight bytes, the first one lowest: all machines that this is built for store numbers like that.
static_assert(std::endian::native == std::endian::little);
std::uint64_t eight_bytes(const std::uint8_t* from) {
    std::uint64_t word = 0;
    std::memcpy(&word, from, sizeof word);
    return word;
}

// The bytes of value FF among eight, each told by its highest bit.
std::uint64_t sync_bytes(std::uint64_t word) {
    constexpr std::uint64_t kLowBits = 0x7F7F'7F7F'7F7F'7F7F;
    const std::uint64_t inverted = ~word;
    return ~(((inverted & kLowBits) + kLowBits) | inverted | kLowBits);
}

// Calls `visit` with each byte of value FF from the last one to the first. In audio only one of 256
// is one, so eight are looked at at a time.
template <typename Visit>
void for_each_sync_byte_backward(const std::uint8_t* begin, const std::uint8_t* end, Visit visit) {
    while (end - begin >= 8) {
        end -= 8;
        std::uint64_t found = sync_bytes(eight_bytes(end));
        while (found != 0) {
            const int place = 63 - std::countl_zero(found);
            visit(end + place / 8);
            found &= ~(std::uint64_t{1} << place);
        }
    }
    while (end != begin) {
        --end;
        if (*end == kSyncByte) {
            visit(end);
        }
    }
}

// What is known of the chains from the frames just behind the place where a backward pass stands.
// A frame's successor is never farther than the longest frame, so this is all that is needed.
class ChainTails {
public:
    // The chain from a whole frame at `position`, whose header is valid.
    WalkedStream add(std::int32_t position, std::uint32_t bits, const FrameShape& shape) {
        WalkedStream stream{1, shape.bit_rate_by_8 * 8};
        const std::int32_t next = position + static_cast<std::int32_t>(shape.length_of(bits));
        const Entry& follower = entry(next);
        if (follower.position == next && headers_agree(follower.bits, bits)) {
            stream.frames += follower.stream.frames;
            stream.bit_rate_sum += follower.stream.bit_rate_sum;
        }
        entry(position) = {position, bits, stream};
        return stream;
    }

private:
    struct Entry {
        std::int32_t position = -1;
        std::uint32_t bits = 0;
        WalkedStream stream;
    };
    static constexpr std::size_t kRing = 4'096;
    static_assert(kRing > kLongestFrame);

    Entry& entry(std::int32_t position) {
        return (*entries_)[static_cast<std::size_t>(position) & (kRing - 1)];
    }

    std::unique_ptr<std::array<Entry, kRing>> entries_ =
        std::make_unique<std::array<Entry, kRing>>();
};

// Blocks of a file from its end to its beginning, each with the first bytes of the one behind it,
// so that no header is cut.
class BackwardBlocks {
public:
    BackwardBlocks(FileWindow& window, std::int64_t begin, std::int64_t end)
        : window_(window), begin_(begin), position_(std::max(begin, end)) {}

    bool next() {
        if (position_ <= begin_) {
            return false;
        }
        std::array<std::uint8_t, kOverlap> behind{};
        std::copy_n(bytes_.begin(), std::min(kOverlap, size_), behind.begin());
        size_ = static_cast<std::size_t>(
            std::min<std::int64_t>(position_ - begin_, FileWindow::kBlock));
        position_ -= static_cast<std::int64_t>(size_);
        const std::size_t copied = window_.copy(position_, std::span(bytes_).first(size_));
        // Nothing is a frame where another program has cut the file meanwhile.
        std::fill_n(bytes_.begin() + static_cast<std::ptrdiff_t>(copied), size_ - copied,
                    std::uint8_t{0});
        std::copy(behind.begin(), behind.end(),
                  bytes_.begin() + static_cast<std::ptrdiff_t>(size_));
        return true;
    }
    [[nodiscard]] std::int64_t position() const noexcept { return position_; }
    [[nodiscard]] const std::uint8_t* begin() const noexcept { return bytes_.data(); }
    [[nodiscard]] const std::uint8_t* end() const noexcept { return bytes_.data() + size_; }

private:
    static constexpr std::size_t kOverlap = kHeaderBytes - 1;

    FileWindow& window_;
    std::int64_t begin_;
    std::int64_t position_;
    std::size_t size_ = 0;
    std::vector<std::uint8_t> bytes_ = std::vector<std::uint8_t>(FileWindow::kBlock + kOverlap);
};

}  // namespace

std::optional<WalkedStream> FullScan::run(std::int32_t start) {
    // Both ways and what was read before are to be two readings of the file at most. Where a tag
    // was looked for up to the end, the way back, which finds the first stream as well, is enough.
    const auto held = static_cast<std::int64_t>(window_.held_from(start).size());
    if (window_.bytes_read() > start + held + start) {
        return earliest_from(start);
    }
    const WalkedStream stream = walk_from(start);
    if (cancelled_) {
        return std::nullopt;
    }
    return accepted(stream) ? stream : earliest_from(start + 1);
}

WalkedStream FullScan::walk_from(std::int32_t start) {
    WalkedStream stream;
    std::optional<std::uint32_t> first_bits;
    std::optional<StreamFrames> frames;
    std::int64_t position = start;
    bool goes_on = true;
    window_.expect_until(window_.length());
    while (goes_on && !cancelled_) {
        window_.keep_from(position);
        const auto block = window_.view_block(position, kHeaderBytes);
        if (block.size() < kHeaderBytes) {
            break;
        }
        if (!first_bits) {
            first_bits = header_bits(block.data());
            if (!parse_frame_header(*first_bits)) {
                trace_broken_rule(*first_bits, trace_);
                break;
            }
            frames.emplace(*first_bits);
        }
        std::size_t offset = 0;
        const auto left = static_cast<std::size_t>(window_.length() - position);
        goes_on = walk_block(block, left, *first_bits, *frames, stream, offset);
        if (!goes_on) {
            trace_rejected(*first_bits, header_bits(block.data() + offset), trace_);
        }
        position += static_cast<std::int64_t>(offset);
        report(position);
    }
    return stream;
}

std::optional<WalkedStream> FullScan::earliest_from(std::int32_t begin) {
    std::optional<WalkedStream> earliest;
    ChainTails tails;
    const std::int64_t length = window_.length();
    BackwardBlocks blocks(window_, begin, length);
    while (blocks.next()) {
        // The way that is done, so that a progress bar runs forward here as well.
        report(begin + (length - blocks.position()));
        if (cancelled_) {
            return std::nullopt;
        }
        for_each_sync_byte_backward(blocks.begin(), blocks.end(), [&](const std::uint8_t* sync) {
            const std::uint32_t bits = header_bits(sync);
            const FrameShape& shape = frame_shape(bits);
            const std::int64_t position = blocks.position() + (sync - blocks.begin());
            if ((bits & kSyncMask) != kSyncMask || (bits & kEmphasisMask) == kReservedEmphasis ||
                shape.length == 0 || position + shape.length_of(bits) > length) {
                return;
            }
            const WalkedStream stream = tails.add(static_cast<std::int32_t>(position), bits, shape);
            if (accepted(stream)) {
                earliest = stream;
            }
        });
    }
    return earliest;
}

void FullScan::report(std::int64_t position) {
    if (clock_.seconds() - reported_ <= kProgressSeconds) {
        return;
    }
    yield_to(host_);
    reported_ = clock_.seconds();
    if (host_ == nullptr) {
        return;
    }
    skip_errors([&] {
        host_->RaiseScanningEvent(file_name_, static_cast<std::int32_t>(position),
                                  static_cast<std::int32_t>(window_.length()), cancelled_);
    });
}

}  // namespace brindle
