// The frames of a tag as the public documents describe them.
#pragma once

#include <brindle/tag_facts.h>

#include "util/byte_range.h"
#include "util/file_window.h"

namespace brindle {

// Of the tags at `range`.
[[nodiscard]] TagFacts read_facts(FileWindow& window, const ByteRange& range);

}  // namespace brindle
