// Finding an ID3v2 tag in a file.
#pragma once

#include <cstdint>
#include <optional>

#include "util/file_window.h"

namespace brindle {

// The 0-based position of the "ID3" of the first tag of a known version; none when audio begins
// first. The file is searched in blocks of 4,096 bytes, a block that the file does not fill is
// not looked at, and within a block "ID3" counts before audio, wherever either stands.
[[nodiscard]] std::optional<std::int32_t> find_tag(FileWindow& file);

// True when a second tag begins exactly at `position`, where the first one ends.
[[nodiscard]] bool is_tag_at(FileWindow& file, std::int64_t position);

}  // namespace brindle
