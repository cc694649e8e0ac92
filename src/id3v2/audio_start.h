// Where the audio of a file really begins: the byte in front of which nothing is audio.
#pragma once

#include <cstdint>
#include <optional>

#include "util/file_window.h"

namespace brindle {

// Bytes that a tag claims, from its header to behind its last byte. Empty where there is no tag.
struct ClaimedArea {
    std::int64_t begin = 0;
    std::int64_t end = 0;
};

// The first byte of audio, for cutting what stands before it; none when nothing in the file looks
// like audio.
//
// The analyser's accepted frame is not enough for that: it may lie behind real audio (a change of
// channel mode within the first frames, damaged or few first frames), and a tag may claim some
// bytes too many. So frames before it count too when they can't be chance:
// - headers, each exactly where the frame before ends, that lead to the accepted frame, also from
//   inside the claimed area;
// - outside that area, three headers in a row of one version, layer and sampling frequency;
// - right behind that area, a single header.
// Without an accepted frame, the first three such headers anywhere stand for it.
[[nodiscard]] std::optional<std::int64_t> find_audio_start(FileWindow& file,
                                                           std::optional<std::int64_t> accepted,
                                                           const ClaimedArea& claimed);

// Whether a valid frame header stands at `position`.
[[nodiscard]] bool is_frame_at(FileWindow& file, std::int64_t position);

}  // namespace brindle
