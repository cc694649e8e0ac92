// What is wrong with a file's frames and what surrounds them.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "bridges/bridge.h"
#include "commands/check_reasons.h"
#include "commands/checked_file.h"
#include "listen/listen_to_file.h"

namespace brindle::host {

struct CheckedAudio {
    std::int64_t milliseconds = 0;  // that the file plays
    PlayingTime time;               // of the stream alone
    std::optional<Listening> heard = {};
};

// Walks over every frame, and decodes it where there is a `listening`. Nothing where hosts find no
// stream. Raises Error when the file can't be read.
std::optional<CheckedAudio> check_audio(CheckedFile& file, FileListening* listening,
                                        std::vector<Finding>& findings);

}  // namespace brindle::host
