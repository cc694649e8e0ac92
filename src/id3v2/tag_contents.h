// All that is known of one file's tag, in memory.
#pragma once

#include <cstdint>
#include <span>

#include "id3v2/byte_arena.h"
#include "id3v2/custom_fields.h"
#include "id3v2/frame_store.h"
#include "id3v2/standard_fields.h"
#include "id3v2/tag_layout.h"

namespace brindle {

struct TagContents {
    ByteArena bytes;  // first: the texts below point into it
    FrameStore frames;
    CustomFields custom;
    StandardFieldTexts fields;
    std::uint8_t genre = 0;

    // True until anything was read or set.
    [[nodiscard]] bool is_new() const noexcept {
        return frames.is_new() && custom.empty() && fields.empty() && genre == 0;
    }
    // Files a frame as the reader found it under its id, and what is derived from it. `value` lies
    // in `bytes`; separators that mean nothing are removed from it in place.
    void file(FrameId id, std::span<std::uint8_t> value);

private:
    void file_standard(StandardField field, StoredText text);
};

}  // namespace brindle
