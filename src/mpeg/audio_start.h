// Where the audio of a file begins.
//
// Audio is what cannot be proven to be anything else. A tag may claim too much, and damage breaks
// the chains of frames that would lead back to the first one, so the search goes forward, from the
// end of what is known to be tag, and takes the earliest frame header that it meets. By chance
// other data holds a false one here and there; then some of that data stays in front of the audio,
// which costs nothing. A lost frame is lost.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "mpeg/frame_header.h"
#include "util/byte_range.h"
#include "util/file_window.h"

namespace brindle {

// The first frame of the stream that the analyser has accepted, and with it hosts.
struct AcceptedFrame {
    std::int64_t position = 0;
    StreamKinds kinds;
};

// The kind of the frame whose header is at `position`; none if there is no valid header.
[[nodiscard]] std::optional<FrameKind> frame_kind_at(FileWindow& file, std::int64_t position);

// Whether a header is at `position`, that of a free-format frame included.
[[nodiscard]] bool is_any_header_at(FileWindow& file, std::int64_t position);

// The first position of `range` at which audio may begin: at a single header of a kind that the
// accepted stream has, or at the first of three headers of any one kind that follow each other.
// Without an accepted stream, at a single header of any kind. Free-format headers count as single
// ones.
[[nodiscard]] std::optional<std::int64_t> find_audio(FileWindow& file, const ByteRange& range,
                                                     const std::optional<StreamKinds>& accepted);

// Whether a header is anywhere in the bytes, that of a free-format frame included.
[[nodiscard]] bool holds_header(std::span<const std::uint8_t> bytes);

// Whether a frame of the kind of the header at `position` ends exactly there and begins in the
// last bytes before it, at `begin` or later. If there is no header, frames of any kind count.
[[nodiscard]] bool frame_ends_at(FileWindow& file, std::int64_t begin, std::int64_t position);

}  // namespace brindle
