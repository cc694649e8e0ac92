// A hash that identifies equal audio independently of the tags.
#pragma once

#include <string>

#include "system/input_file.h"

namespace brindle::host {

// SHA-256 of all frames that walk_frames() finds, the encoder's header frame and a last frame that
// is cut off included, without the bytes between them. "" without a stream.
// Errors: those of opening and reading.
[[nodiscard]] std::string audio_hash(InputFile& file);

}  // namespace brindle::host
