// Where the tag of a file lies by the public documents.
#pragma once

#include <optional>

#include "mpeg/audio_start.h"
#include "util/byte_range.h"
#include "util/file_window.h"

namespace brindle {

// The tag at the start of the file, whatever its length, else the one that hosts find, with those
// that directly follow it; none without a tag. It never reaches into the audio.
[[nodiscard]] std::optional<ByteRange> find_tag_range(FileWindow& file,
                                                      const std::optional<AcceptedFrame>& accepted);

}  // namespace brindle
