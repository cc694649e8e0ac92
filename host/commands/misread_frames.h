// Texts and pictures of a tag that hosts do not read as intended.
#pragma once

#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>

namespace brindle::host {

// Labels of frames, as in `TIT2:1`.
struct MisreadFrames {
    std::vector<std::string> misread_texts;
    std::vector<std::string> unread_texts;
    std::vector<std::string> large_pictures;
};

// Reads the tag a second time, by its public documents. Raises Error when it can't be read.
[[nodiscard]] MisreadFrames find_misread_frames(const cMPEGHeader& header);

}  // namespace brindle::host
