// From frame to frame to the end of the audio.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include <brindle/frame_walk.h>

#include "mpeg/frame_header.h"
#include "util/file_window.h"

namespace brindle {

class FrameWalker {
public:
    // Nothing from `audio_end` on is audio. No farther than the end of the file.
    // Frames are handed to `visit` unless it is empty.
    FrameWalker(FileWindow& window, std::int64_t audio_end, FrameVisitor visit = {})
        : window_(window), audio_end_(audio_end), visit_(std::move(visit)) {}

    // All 0 when there is no valid, complete frame at `first_frame`.
    FrameWalk run(std::int64_t first_frame);

private:
    void follow_chain();
    void visit_chain();
    // The header at `position` when it is of the kind of the first one; its frame may be cut.
    [[nodiscard]] std::optional<FrameHeader> header_at(std::int64_t position);
    [[nodiscard]] bool is_frame_cut_at(std::int64_t position);
    [[nodiscard]] bool is_confirmed_frame_at(std::int64_t position);

    FileWindow& window_;
    const std::int64_t audio_end_;
    const FrameVisitor visit_;
    std::uint32_t first_bits_ = 0;
    std::int64_t position_ = 0;
    FrameWalk walk_;
};

}  // namespace brindle
