// The frames of a tag as the public documents describe them.
#pragma once

#include <span>

#include <brindle/tag_facts.h>

#include "id3v2/public_tag_reader.h"
#include "util/byte_range.h"
#include "util/file_window.h"

namespace brindle {

// Of the tags at `range`.
[[nodiscard]] TagFacts read_facts(FileWindow& window, const ByteRange& range);
// The same, of those that have been found there.
[[nodiscard]] TagFacts read_facts(FileWindow& window, const ByteRange& range,
                                  std::span<const PublicTag> tags);

}  // namespace brindle
