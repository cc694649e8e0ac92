// All that is known of one file's tag, in memory.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "id3v2/byte_arena.h"
#include "id3v2/custom_fields.h"
#include "id3v2/frame_store.h"
#include "id3v2/standard_fields.h"

namespace brindle {

struct TagContents {
    ByteArena bytes;  // first: the texts below point into it
    FrameStore frames;
    CustomFields custom;
    StandardFieldTexts fields;
    std::uint8_t genre = 0;

    // Files a frame as the reader found it under its id, and what is derived from it. `value` lies
    // in `bytes`; separators that mean nothing are removed from it in place. The id as it is kept.
    String file(std::string_view id, std::span<std::uint8_t> value);
};

}  // namespace brindle
