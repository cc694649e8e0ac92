// Where a tag is written in a file, and which part of the file stays after it.
#pragma once

#include <cstdint>
#include <optional>

#include "mpeg/audio_start.h"
#include "util/byte_range.h"
#include "util/file_window.h"

namespace brindle {

struct TagArea {
    // The old tag that a new one of at most `length` bytes overwrites in place; none: the file is
    // rebuilt in any case.
    std::optional<std::int64_t> position;
    std::int64_t length = 0;
    // The first byte of the old file that follows the tag in a new one.
    std::int64_t kept_from = 0;
    // The first byte of audio, where the file has any.
    std::optional<std::int64_t> audio;
    // The bytes to remove with the tag: everything before the audio, without audio the tag
    // alone. Empty if there is nothing to remove; none if the tag claims more than the file
    // holds and its end is unknown.
    std::optional<ByteRange> strippable = ByteRange();

    // A file without a tag whose audio begins there.
    [[nodiscard]] static TagArea with_audio_at(std::optional<std::int64_t> position) noexcept {
        TagArea area;
        area.kept_from = position.value_or(0);
        area.audio = position;
        return area;
    }
    // The new tag takes the old one's space only when some of it is left over.
    [[nodiscard]] bool fits(std::int64_t needed) const noexcept {
        return position && needed < length;
    }
};

// `accepted` is the analyser's first frame in the current file.
[[nodiscard]] TagArea find_tag_area(FileWindow& file, const std::optional<AcceptedFrame>& accepted);
// The same for the tag whose "ID3" is at `tag`.
[[nodiscard]] TagArea find_tag_area(FileWindow& file, const std::optional<AcceptedFrame>& accepted,
                                    std::optional<std::int64_t> tag);

// What a rebuilt file leaves for its tag: the next multiple of 2,048 above what is needed, so that
// later changes usually fit in place.
[[nodiscard]] std::int64_t roomy_area(std::int64_t needed) noexcept;

}  // namespace brindle
