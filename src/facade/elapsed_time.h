// Milliseconds as text for people.
#pragma once

#include <cstdint>

#include <brindle/values.h>

namespace brindle {

[[nodiscard]] String elapsed_time(std::int32_t milliseconds, eTimeDisplayStyle style);

}  // namespace brindle
