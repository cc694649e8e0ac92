// From a file to what is heard in it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <brindle/cMPEGHeader.h>

#include "listening.h"

namespace brindle::host {

// Why this program can't listen, or nothing.
[[nodiscard]] std::optional<std::string> reason_against_listening();

// The file that is open in `header`, of `bytes` bytes. Nothing when no MPEG audio is found in it.
// Raises Error when the file can't be read, std::bad_alloc.
[[nodiscard]] std::optional<Listening> listen_to_file(const cMPEGHeader& header, std::int64_t bytes,
                                                      const ListenOptions& options);

}  // namespace brindle::host
