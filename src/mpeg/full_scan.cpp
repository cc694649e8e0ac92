#include "mpeg/full_scan.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <span>
#include <vector>

#include "mpeg/chain_tails.h"
#include "mpeg/frame_header.h"
#include "mpeg/pacing.h"

namespace brindle {
namespace {

constexpr double kProgressSeconds = 0.5;

// Eight bytes, the last one lowest.
std::uint64_t eight_bytes(const std::uint8_t* from) {
    return std::uint64_t{header_bits(from)} << 32U | header_bits(from + kHeaderBytes);
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
        const std::uint8_t* const last = end - 1;
        end -= 8;
        for (std::uint64_t found = sync_bytes(eight_bytes(end)); found != 0; found &= found - 1) {
            visit(last - std::countr_zero(found) / 8);
        }
    }
    while (end != begin) {
        --end;
        if (*end == kSyncByte) {
            visit(end);
        }
    }
}

// Blocks of a file from its end to its beginning, each with the first bytes of the one after it,
// so that no header is cut.
class BackwardBlocks {
public:
    BackwardBlocks(FileWindow& window, std::int64_t begin, std::int64_t end)
        : window_(window),
          begin_(begin),
          position_(std::max(begin, end)),
          bytes_(next_size() + kOverlap) {}

    bool next() {
        if (position_ <= begin_) {
            return false;
        }
        std::array<std::uint8_t, kOverlap> following{};
        std::copy_n(bytes_.begin(), std::min(kOverlap, size_), following.begin());
        size_ = next_size();
        position_ -= static_cast<std::int64_t>(size_);
        const std::size_t copied = window_.copy(position_, std::span(bytes_).first(size_));
        // Nothing is a frame where another program has cut the file meanwhile.
        std::fill_n(bytes_.begin() + static_cast<std::ptrdiff_t>(copied), size_ - copied,
                    std::uint8_t{0});
        std::copy(following.begin(), following.end(),
                  bytes_.begin() + static_cast<std::ptrdiff_t>(size_));
        return true;
    }
    [[nodiscard]] std::int64_t position() const noexcept { return position_; }
    [[nodiscard]] const std::uint8_t* begin() const noexcept { return bytes_.data(); }
    [[nodiscard]] const std::uint8_t* end() const noexcept { return bytes_.data() + size_; }

private:
    static constexpr std::size_t kOverlap = kHeaderBytes - 1;

    [[nodiscard]] std::size_t next_size() const noexcept {
        return static_cast<std::size_t>(
            std::min<std::int64_t>(position_ - begin_, FileWindow::kBlock));
    }

    FileWindow& window_;
    std::int64_t begin_;
    std::int64_t position_;
    std::size_t size_ = 0;
    std::vector<std::uint8_t> bytes_;
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
    return is_accepted(stream) ? stream : earliest_from(start + 1);
}

WalkedStream FullScan::walk_from(std::int32_t start) {
    WalkedStream stream;
    std::optional<std::uint32_t> first_bits;
    std::optional<FrameLengthTable<kStreamMask>> frames;
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
                break;
            }
            frames.emplace(*first_bits);
        }
        std::size_t offset = 0;
        const auto left = static_cast<std::size_t>(window_.length() - position);
        goes_on = walk_block(block, left, *frames, stream, offset);
        position += static_cast<std::int64_t>(offset);
        report(position);
    }
    return stream;
}

std::optional<WalkedStream> FullScan::earliest_from(std::int32_t begin) {
    std::optional<WalkedStream> earliest;
    const std::int64_t length = window_.length();
    ChainTails tails(length);
    BackwardBlocks blocks(window_, begin, length);
    while (blocks.next()) {
        // The way that is done, so that a progress bar runs forward here as well.
        report(begin + (length - blocks.position()));
        if (cancelled_) {
            return std::nullopt;
        }
        const std::int64_t position = blocks.position();
        const std::uint8_t* const bytes = blocks.begin();
        for_each_sync_byte_backward(bytes, blocks.end(), [&](const std::uint8_t* sync) {
            if (const auto chain = tails.add(position + (sync - bytes), header_bits(sync));
                chain.is_accepted()) {
                earliest = chain.stream();
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
