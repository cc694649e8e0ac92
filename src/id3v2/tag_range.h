// Where the tag of a file lies by the public documents.
#pragma once

#include <cstdint>
#include <optional>

#include "mpeg/audio_start.h"
#include "util/byte_range.h"
#include "util/file_window.h"

namespace brindle {

struct FoundTag {
    // The tag at the start of the file, whatever its length, else the one that hosts find, with
    // those that directly follow it; none without a tag. It never reaches into the audio.
    std::optional<ByteRange> range;
    // Where hosts find a tag.
    std::optional<std::int32_t> host_position;

    // An empty one without a tag.
    [[nodiscard]] ByteRange range_or_empty() const { return range.value_or(ByteRange()); }
};

[[nodiscard]] FoundTag find_tag_range(FileWindow& file,
                                      const std::optional<AcceptedFrame>& accepted);

}  // namespace brindle
