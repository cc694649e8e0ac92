// The frames of a tag as an edit leaves them.
#pragma once

#include <span>

#include <brindle/tag_edit.h>

#include "id3v2/field_frame.h"
#include "util/binary_file.h"
#include "util/byte_range.h"
#include "util/file_content.h"
#include "util/file_window.h"

namespace brindle {

// All frames of the new tag, one after the other: those of the tags in `area`, with the fields in
// place of what they replace. Frames that need not change stay in `file`, which must stay open;
// `window` is one over it. Tells in `plan` what becomes of each frame.
[[nodiscard]] FileContent edited_frames(BinaryFile& file, FileWindow& window, const ByteRange& area,
                                        std::span<const EditedField> fields,
                                        const EditOptions& options, EditPlan& plan);

}  // namespace brindle
