// The system's error codes as the numbers that hosts know.
#pragma once

#include <cstdint>

#include <brindle/error.h>

#include "util/file_action.h"

namespace brindle {

[[nodiscard]] RuntimeError runtime_error(std::uint32_t code, FileAction action) noexcept;

// What the last call of the system in this thread failed with.
[[noreturn]] void raise_last_error(FileAction action);

}  // namespace brindle
