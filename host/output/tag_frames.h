// The frames of a file's ID3v2 tag.
#pragma once

#include <vector>

#include <brindle/cMPEGHeader.h>

namespace brindle::host {

// In the order of the file, each once.
[[nodiscard]] std::vector<String> tag_frame_ids(const cMPEGHeader& header);

[[nodiscard]] bool is_picture(const String& frame_id);

}  // namespace brindle::host
