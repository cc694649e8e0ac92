// Frames that a player can play where the library's walk finds none.
#pragma once

#include <cstdint>
#include <optional>

#include "commands/mpeg_frame.h"
#include "system/file_access.h"

namespace brindle::host {

struct FoundFrames {
    std::int64_t frames = 0;
    std::int64_t bytes = 0;  // of all these frames
    std::int64_t runs = 0;   // of frames that follow each other
    double seconds = 0;
    std::int64_t first = 0;  // offset of the first one
    std::int64_t first_run_end = 0;
    std::int64_t end = 0;  // of the last one
    std::optional<MpegFrame> first_frame;
    std::optional<MpegFrame> other_kind;  // the first that is not of the kind of the first one
};

// Frames of any kind from `begin` to `end`: three headers, each where the frame before it ends, or
// fewer that lead exactly to the end. Reads the range once, in blocks, in time linear in its
// length.
[[nodiscard]] FoundFrames find_frames(FileBytes& file, std::int64_t begin, std::int64_t end);

// The first frame of a stream in free format that begins in the first 64 KiB: three equal headers
// at equal distances. Time is bounded.
[[nodiscard]] std::optional<MpegFrame> find_free_format(FileBytes& file, std::int64_t begin);

}  // namespace brindle::host
