#include "mpeg/frame_walker.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "mpeg/block_walk.h"
#include "mpeg/duration.h"
#include "mpeg/header_search.h"
#include "mpeg/xing_header.h"
#include "util/fixed_decimal.h"

namespace brindle {
namespace {

constexpr auto kHeaderLength = static_cast<std::int64_t>(kHeaderBytes);
constexpr std::int64_t kMillisecondsPerSecond = 1'000;

}  // namespace

FrameWalk FrameWalker::run(std::int64_t first_frame) {
    window_.expect_until(audio_end_);
    const auto first = frame_at(window_, first_frame, audio_end_);
    if (!first) {
        return {};
    }
    const auto frame = window_.view(first_frame, first->length);
    if (frame.size() < first->length) {
        return {};  // the file has become shorter
    }
    const FrameHeaderRecord header = record_of(first->bits, checked_long(first_frame));
    first_bits_ = first->bits;
    walk_.samples_per_frame = samples_per_frame(header.MpegVersion, header.MpegLayer);
    walk_.frequency = header.SamplingFrequency;
    walk_.first_frame = first_frame;
    walk_.has_header_frame = holds_vbr_header(frame.subspan(kHeaderBytes));
    position_ = first_frame;
    follow_chain();
    walk_.last_frame_is_cut = is_frame_cut_at(position_);
    while (position_ < audio_end_ && !walk_.last_frame_is_cut) {
        const auto next =
            find_header(window_, {position_ + 1, audio_end_ - kHeaderLength + 1},
                        [this](std::int64_t position) { return is_confirmed_frame_at(position); });
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
    walk_.bytes_after = audio_end_ - position_;
    walk_.frames -= walk_.has_header_frame ? 1 : 0;
    walk_.milliseconds = divide_half_even(
        walk_.frames * walk_.samples_per_frame * kMillisecondsPerSecond, walk_.frequency);
    return walk_;
}

// Leaves the position where no whole frame follows.
void FrameWalker::follow_chain() {
    if (visit_) {
        visit_chain();
        return;
    }
    const FrameLengthTable<kSyncAndKindMask> frames(first_bits_);
    bool goes_on = true;
    while (goes_on) {
        window_.keep_from(position_);
        const auto block = window_.view_block(position_, kHeaderBytes);
        const auto left = static_cast<std::size_t>(audio_end_ - position_);
        const std::size_t size = std::min(block.size(), left);
        if (size < kHeaderBytes) {
            break;
        }
        WalkedStream stream;
        std::size_t offset = 0;
        goes_on = walk_block(block.first(size), left, frames, stream, offset);
        walk_.frames += stream.frames;
        position_ += static_cast<std::int64_t>(offset);
    }
}

// The same frame by frame: a visitor receives all bytes of each.
void FrameWalker::visit_chain() {
    const FrameLengthTable<kSyncAndKindMask> frames(first_bits_);
    const std::int64_t chain = position_;
    std::span<const std::uint8_t> block;  // from the position on
    // 0 where no frame of the stream begins, or not a whole one.
    const auto length_of_frame = [&]() -> std::size_t {
        const auto left = static_cast<std::size_t>(audio_end_ - position_);
        if (std::min(block.size(), left) < kHeaderBytes || !frames.has(block.data())) {
            return 0;
        }
        const std::size_t length = frames.length(block.data());
        return length <= left ? length : 0;
    };
    for (;;) {
        window_.keep_from(position_);
        block = window_.view_block(position_, kHeaderBytes);
        std::size_t length = length_of_frame();
        if (length > block.size()) {
            block = window_.view_block(position_, length);
        }
        if (length == 0 || length > block.size()) {
            break;  // or the file has become shorter
        }
        do {
            visit_({.offset = position_,
                    .bytes = block.first(length),
                    .is_header_frame = walk_.has_header_frame && position_ == walk_.first_frame,
                    .follows_gap = walk_.gaps > 0 && position_ == chain});
            ++walk_.frames;
            position_ += static_cast<std::int64_t>(length);
            block = block.subspan(length);
            length = length_of_frame();
        } while (length != 0 && length <= block.size());
    }
}

std::optional<FrameHeader> FrameWalker::header_at(std::int64_t position) {
    if (position + kHeaderLength > audio_end_) {
        return std::nullopt;
    }
    const auto header = parse_frame_header(header_bits_at(window_, position));
    return header && ((header->bits ^ first_bits_) & kKindMask) == 0 ? header : std::nullopt;
}

bool FrameWalker::is_frame_cut_at(std::int64_t position) {
    const auto header = header_at(position);
    return header && position + header->length > audio_end_;
}

bool FrameWalker::is_confirmed_frame_at(std::int64_t position) {
    const auto header = header_at(position);
    if (!header) {
        return false;
    }
    const std::int64_t next = position + header->length;
    return next == audio_end_ || header_at(next);
}

}  // namespace brindle
