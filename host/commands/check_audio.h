// What is wrong with a file's frames and what surrounds them.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "commands/check_reasons.h"
#include "commands/checked_file.h"
#include "listen/listen_to_file.h"

namespace brindle::host {

struct CheckedAudio {
    std::int64_t milliseconds = 0;  // that the file plays
    std::int64_t delay = 0;         // of these the encoder's, which some players leave out
    std::optional<Listening> heard = {};
};

// Walks over every frame, and decodes it where there is a `listening`. Nothing where hosts find no
// stream. Raises Error when the file can't be read.
std::optional<CheckedAudio> check_audio(CheckedFile& file, FileListening* listening,
                                        std::vector<Finding>& findings);

}  // namespace brindle::host
