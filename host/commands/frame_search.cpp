#include "commands/frame_search.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace brindle::host {

namespace {

constexpr char kSyncByte = '\xFF';
constexpr auto kHeaderBytes = static_cast<std::int64_t>(MpegFrame::kHeaderBytes);

// A range of a file, read in blocks. Requested positions may go back by two frames.
class BlockReader {
public:
    BlockReader(FileBytes& file, std::int64_t end) : file_(file), end_(end) {}

    // The bytes from a position to at most the end of the block; empty at the end of the range.
    std::string_view from(std::int64_t position) {
        const std::int64_t held_to = begin_ + static_cast<std::int64_t>(block_.size());
        const bool is_held = position >= begin_ && position + kHeaderBytes <= held_to;
        if (!is_held && position < end_) {
            begin_ = std::max<std::int64_t>(0, position - 2 * MpegFrame::kLongest);
            block_ = file_.read(begin_, static_cast<std::size_t>(std::min(kBlock, end_ - begin_)));
        }
        const std::int64_t skipped = position - begin_;
        if (skipped < 0 || skipped >= static_cast<std::int64_t>(block_.size())) {
            return {};
        }
        return std::string_view(block_).substr(static_cast<std::size_t>(skipped));
    }

private:
    static constexpr std::int64_t kBlock = 65'536;

    FileBytes& file_;
    std::int64_t end_;
    std::int64_t begin_ = 0;
    std::string block_;
};

class FrameSearch {
public:
    FrameSearch(FileBytes& file, std::int64_t begin, std::int64_t end)
        : reader_(file, end), position_(begin), end_(end) {}

    FoundFrames run() {
        while (position_ + kHeaderBytes <= end_) {
            const std::string_view block = reader_.from(position_);
            if (block.empty()) {
                break;  // the file has become shorter
            }
            const std::size_t sync = block.find(kSyncByte);
            if (sync != 0) {
                position_ += static_cast<std::int64_t>(std::min(sync, block.size()));
            } else if (leads_on(position_)) {
                follow();
            } else {
                ++position_;
            }
        }
        return found_;
    }

private:
    std::optional<MpegFrame> whole_frame(std::int64_t position) {
        if (position + kHeaderBytes > end_) {
            return std::nullopt;
        }
        const auto frame = mpeg_frame_in(reader_.from(position));
        const bool is_whole = frame && !frame->is_free_format() && position + frame->length <= end_;
        return is_whole ? frame : std::nullopt;
    }

    // Looks at most two frames ahead, so the cost of a position is bounded.
    bool leads_on(std::int64_t position) {
        constexpr int kConfirming = 3;
        for (int frames = 0; frames < kConfirming && position != end_; ++frames) {
            const auto frame = whole_frame(position);
            if (!frame) {
                return false;
            }
            position += frame->length;
        }
        return true;
    }

    void follow() {
        ++found_.runs;
        while (const auto frame = whole_frame(position_)) {
            if (!found_.first_frame) {
                found_.first = position_;
                found_.first_frame = frame;
            } else if (!found_.other_kind && !is_same_kind(*frame, *found_.first_frame)) {
                found_.other_kind = frame;
            }
            ++found_.frames;
            found_.bytes += frame->length;
            found_.seconds += static_cast<double>(frame->samples()) / frame->frequency;
            position_ += frame->length;
        }
        found_.end = position_;
        found_.first_run_end = found_.runs == 1 ? position_ : found_.first_run_end;
    }

    BlockReader reader_;
    std::int64_t position_;
    std::int64_t end_;
    FoundFrames found_;
};

}  // namespace

FoundFrames find_frames(FileBytes& file, std::int64_t begin, std::int64_t end) {
    return FrameSearch(file, begin, end).run();
}

std::optional<MpegFrame> find_free_format(FileBytes& file, std::int64_t begin) {
    constexpr std::size_t kSearched = 65'536;
    constexpr std::size_t kMinDistance = 24;
    constexpr std::size_t kMaxDistance = 8'192;
    constexpr int kMaxAttempts = 64;
    constexpr std::size_t kIdentical = 2;  // bytes of all headers: sync to protection
    const std::string block = file.read(begin, kSearched + 2 * kMaxDistance + 2);
    const std::string_view bytes = block;
    const auto frame_at = [&](std::size_t position) {
        return position < bytes.size() ? mpeg_frame_in(bytes.substr(position)) : std::nullopt;
    };
    int attempts = 0;
    for (std::size_t first = bytes.find(kSyncByte); first < kSearched && attempts < kMaxAttempts;
         first = bytes.find(kSyncByte, first + 1)) {
        const auto frame = frame_at(first);
        if (!frame || !frame->is_free_format()) {
            continue;
        }
        ++attempts;
        const std::string_view mark = bytes.substr(first, kIdentical);
        const auto is_like_first = [&](std::size_t position) {
            const auto other = frame_at(position);
            return other && other->is_free_format() && is_same_kind(*other, *frame) &&
                   other->mode() == frame->mode();
        };
        for (std::size_t second = bytes.find(mark, first + kMinDistance);
             second < first + kMaxDistance; second = bytes.find(mark, second + 1)) {
            const std::size_t distance = second - first;
            // Padding makes a difference of one.
            if (is_like_first(second) &&
                (is_like_first(second + distance) || is_like_first(second + distance + 1) ||
                 is_like_first(second + distance - 1))) {
                return frame;
            }
        }
    }
    return std::nullopt;
}

}  // namespace brindle::host
