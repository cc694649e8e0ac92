// Whether hosts read of a tag what it says by the public documents.
#pragma once

#include <span>

#include "id3v2/frame_store.h"
#include "id3v2/public_tag_reader.h"
#include "id3v2/tag_range.h"
#include "util/file_window.h"

namespace brindle {

// Hosts read every text, and no picture is too large for them. Of a tag of version 2, which they
// read in a way of its own, and where the public documents and hosts find other tags, the answer is
// false.
//
// The plan of a save finds out of each frame what becomes of it, and takes ten times as long: it
// reads the tag once more as hosts do, and builds a new one.
[[nodiscard]] bool hosts_read_the_same(FileWindow& file, const FoundTag& found,
                                       std::span<const PublicTag> tags_in_range,
                                       const FrameStore& read_by_hosts);

}  // namespace brindle
