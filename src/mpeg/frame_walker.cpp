#include "mpeg/frame_walker.h"

#include <algorithm>
#include <cstddef>

#include "mpeg/duration.h"
#include "mpeg/frame_header.h"
#include "mpeg/xing_header.h"
#include "util/find_byte.h"
#include "util/fixed_decimal.h"

namespace brindle {
namespace {

constexpr auto kHeaderLength = static_cast<std::int64_t>(kHeaderBytes);
constexpr std::uint32_t kSyncAndKindMask = kSyncMask | kKindMask;

}  // namespace

FrameWalk FrameWalker::run(std::int64_t first_frame) {
    window_.expect_until(audio_end_);
    FrameHeaderRecord first;
    const auto bytes = window_.view(first_frame, kHeaderBytes);
    std::copy(bytes.begin(), bytes.end(), first.HeaderBytes.begin());
    first.HeaderStartPos = checked_long(first_frame);
    if (!DecodeFrameHeader(first, &window_, {}) || first_frame + first.FrameLength > audio_end_) {
        return {};
    }
    first_bits_ = header_bits(first.HeaderBytes.data());
    walk_.first_frame = first_frame;
    walk_.has_header_frame = holds_vbr_header(first.FrameData);
    position_ = first_frame;
    follow_chain();
    walk_.last_frame_is_cut = is_frame_cut_at(position_);
    while (position_ < audio_end_ && !walk_.last_frame_is_cut) {
        const auto next = find_frame_from(position_ + 1);
        if (!next) {
            break;
        }
        walk_.first_gap = walk_.gaps == 0 ? position_ : walk_.first_gap;
        ++walk_.gaps;
        walk_.bytes_in_gaps += *next - position_;
        position_ = *next;
        follow_chain();
        walk_.last_frame_is_cut = is_frame_cut_at(position_);
    }
    walk_.end = position_;
    walk_.bytes_behind = audio_end_ - position_;
    add_up(first);
    return walk_;
}

// Leaves the position where no whole frame follows.
void FrameWalker::follow_chain() {
    if (visit_) {
        visit_chain();
        return;
    }
    while (position_ < audio_end_) {
        window_.keep_from(position_);
        const auto block = window_.view_block(position_, kHeaderBytes);
        const std::size_t walked = walk_block(block);
        position_ += static_cast<std::int64_t>(walked);
        // A frame that reaches beyond the block leaves the position behind it.
        if (walked + kHeaderBytes <= block.size() || block.size() < kHeaderBytes) {
            break;
        }
    }
}

// The same frame by frame: a visitor wants to see all bytes of each.
void FrameWalker::visit_chain() {
    const std::int64_t chain = position_;
    while (position_ + kHeaderLength <= audio_end_) {
        window_.keep_from(position_);
        const auto bytes = window_.view(position_, kHeaderBytes);
        const auto header = bytes.size() < kHeaderBytes
                                ? std::nullopt
                                : parse_frame_header(header_bits(bytes.data()));
        if (!header || !is_same_kind(header->bits) || position_ + header->length > audio_end_) {
            break;
        }
        const auto frame = window_.view(position_, header->length);
        if (frame.size() < header->length) {
            break;  // the file has become shorter
        }
        visit_({.offset = position_,
                .bytes = frame,
                .is_header_frame = walk_.has_header_frame && position_ == walk_.first_frame,
                .follows_gap = walk_.gaps > 0 && position_ == chain});
        ++walk_.frames;
        position_ += header->length;
    }
}

// The bytes of the frames that begin in the block, from its first byte on. The last of them may end
// behind it.
std::size_t FrameWalker::walk_block(std::span<const std::uint8_t> block) {
    const auto left = static_cast<std::size_t>(audio_end_ - position_);
    const std::size_t size = std::min(block.size(), left);
    const std::uint32_t first_bits = first_bits_;
    std::size_t offset = 0;
    std::int64_t frames = 0;
    while (offset + kHeaderBytes <= size) {
        const std::uint32_t bits = header_bits(block.data() + offset);
        if (((bits ^ first_bits) & kSyncAndKindMask) != 0 ||
            (bits & kEmphasisMask) == kReservedEmphasis) {
            break;
        }
        const FrameShape& shape = frame_shape(bits);
        const std::size_t next = offset + shape.length_of(bits);
        if (shape.length == 0 || next > left) {
            break;
        }
        ++frames;
        offset = next;
    }
    walk_.frames += frames;
    return offset;
}

bool FrameWalker::is_frame_cut_at(std::int64_t position) {
    if (position + kHeaderLength > audio_end_) {
        return false;
    }
    const auto bytes = window_.view(position, kHeaderBytes);
    if (bytes.size() < kHeaderBytes) {
        return false;
    }
    const auto header = parse_frame_header(header_bits(bytes.data()));
    return header && is_same_kind(header->bits) && position + header->length > audio_end_;
}

std::optional<std::int64_t> FrameWalker::find_frame_from(std::int64_t position) {
    while (position + kHeaderLength <= audio_end_) {
        window_.keep_from(position);
        const auto block = window_.view_block(position, kHeaderBytes);
        if (block.size() < kHeaderBytes) {
            break;
        }
        const std::size_t sync = find_byte(block, kSyncByte);
        position += static_cast<std::int64_t>(sync);
        if (sync == block.size()) {
            continue;
        }
        if (is_confirmed_frame_at(position)) {
            return position;
        }
        ++position;
    }
    return std::nullopt;
}

bool FrameWalker::is_confirmed_frame_at(std::int64_t position) {
    const auto bytes = window_.view(position, kHeaderBytes);
    const auto header =
        bytes.size() < kHeaderBytes ? std::nullopt : parse_frame_header(header_bits(bytes.data()));
    if (!header || !is_same_kind(header->bits)) {
        return false;
    }
    const std::int64_t next = position + header->length;
    if (next + kHeaderLength > audio_end_) {
        return next == audio_end_;
    }
    const auto behind = window_.view(next, kHeaderBytes);
    const auto follower = behind.size() < kHeaderBytes
                              ? std::nullopt
                              : parse_frame_header(header_bits(behind.data()));
    return follower && is_same_kind(follower->bits);
}

bool FrameWalker::is_same_kind(std::uint32_t bits) const {
    return ((bits ^ first_bits_) & kSyncAndKindMask) == 0;
}

void FrameWalker::add_up(const FrameHeaderRecord& first) {
    constexpr std::int64_t kMillisecondsPerSecond = 1'000;
    walk_.frames -= walk_.has_header_frame ? 1 : 0;
    walk_.samples_per_frame = samples_per_frame(first.MpegVersion, first.MpegLayer);
    walk_.frequency = first.SamplingFrequency;
    walk_.milliseconds = divide_half_even(
        walk_.frames * walk_.samples_per_frame * kMillisecondsPerSecond, walk_.frequency);
}

}  // namespace brindle
