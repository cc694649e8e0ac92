// How many of the bytes at the front of a file are a tag beyond doubt.
//
// The bytes after a tag are audio, and audio that is taken for tag is lost with the next save. So
// a tag's size is believed only when all of the tag adds up; of any other tag only those frames are
// believed that another frame directly follows.
#pragma once

#include <cstdint>
#include <optional>

#include "util/file_window.h"

namespace brindle {

struct ProvenTag {
    // After the last byte that is known to be tag.
    std::int64_t end = 0;
    // The tag, and further ones directly after it, end where they claim to, and what follows is
    // known. Otherwise audio may begin right at `end`, inside what the tag claims.
    bool adds_up = false;
};

// The tag whose "ID3" is at `position`, which must be there. `stream` is where the frames
// begin that the analyser has accepted, if any: where nothing but the end of the file, or a tag of
// another kind, follows the tag, they cannot lie inside it.
[[nodiscard]] ProvenTag prove_tag(FileWindow& file, std::int64_t position,
                                  std::optional<std::int64_t> stream);

}  // namespace brindle
