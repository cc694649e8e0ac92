// Tags of other programs at the end of a file.
#pragma once

#include <cstdint>
#include <string>

#include "system/file_access.h"

namespace brindle::host {

struct ForeignTags {
    std::int64_t ape_bytes = 0;      // APEv1 or APEv2, header and footer included; 0 without one
    std::int64_t lyrics3_bytes = 0;  // Lyrics3 2.00; 0 without one
};

// Those that end at `end`: where the file ends, or its ID3v1 record begins.
[[nodiscard]] ForeignTags find_foreign_tags(FileBytes& file, std::int64_t end);

// Such tags, one directly after the other, whose parts add up to their length.
struct RemovableTags {
    std::int64_t from = 0;
    std::int64_t to = 0;  // the same where there is none
    std::int64_t ape_bytes = 0;
    std::int64_t lyrics3_bytes = 0;
    // A tag before them, or the only one, whose parts do not add up; "" where there is none.
    std::string damaged;
};

// Those that end at `end` and begin at `begin` or later.
[[nodiscard]] RemovableTags find_removable_tags(FileBytes& file, std::int64_t begin,
                                                std::int64_t end);

}  // namespace brindle::host
