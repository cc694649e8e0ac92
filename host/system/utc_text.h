#pragma once

#include <cstdint>
#include <string>

namespace brindle::host {

// Seconds since 1970 by ISO 8601: `2026-11-22T05:09:54Z`.
[[nodiscard]] std::string utc_text(std::int64_t seconds_since_1970);

}  // namespace brindle::host
