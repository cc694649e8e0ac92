// Where in a file a tag is written, and what of the file stays behind it.
#pragma once

#include <cstdint>
#include <optional>

#include "id3v2/cut_file.h"
#include "util/file_window.h"

namespace brindle {

struct TagArea {
    // The old tag that a new one of at most `length` bytes overwrites in place; none: the file is
    // built anew in any case.
    std::optional<std::int64_t> position;
    std::int64_t length = 0;
    // The first byte of the old file that stands behind the tag of a new one.
    std::int64_t kept_from = 0;
    // The first byte of audio, where the file has any.
    std::optional<std::int64_t> audio;

    // The new tag takes the old one's space only when some of it is left over.
    [[nodiscard]] bool fits(std::int64_t needed) const noexcept {
        return position && needed < length;
    }
};

// `accepted` is the analyser's first frame in the file as it stands.
[[nodiscard]] TagArea find_tag_area(FileWindow& file, std::optional<std::int64_t> accepted);

// What a rebuilt file leaves for its tag: the next multiple of 2,048 above what is needed, so that
// later changes usually fit in place.
[[nodiscard]] std::int64_t roomy_area(std::int64_t needed) noexcept;

// The ID3v2 tag that stands in a file.
struct OldTag {
    std::int64_t position = 0;
    // Bytes with its header, as its size says.
    std::int64_t length = 0;
};
[[nodiscard]] std::optional<OldTag> find_old_tag(FileWindow& file);

// What goes when the tag is taken off: all that stands before the first frame of audio, without
// audio the tag alone. Empty when there is nothing to take off; none when the tag claims more than
// the file holds and nobody knows where it ends.
[[nodiscard]] std::optional<Stretch> find_strippable(FileWindow& file,
                                                     std::optional<std::int64_t> accepted);

}  // namespace brindle
