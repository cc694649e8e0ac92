// Tags at the end of a file that the library does not change.
#pragma once

#include <cstdint>

#include "system/file_access.h"

namespace brindle::host {

struct ForeignTags {
    std::int64_t ape_bytes = 0;      // APEv1 or APEv2, header and footer included; 0 without one
    std::int64_t lyrics3_bytes = 0;  // Lyrics3 2.00; 0 without one
};

// Those that end at `end`: where the file ends, or its ID3v1 record begins.
[[nodiscard]] ForeignTags find_foreign_tags(ReadOnlyFile& file, std::int64_t end);

}  // namespace brindle::host
