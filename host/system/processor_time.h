// How much processor time this process has used.
#pragma once

#include <chrono>

namespace brindle::host {

// Of all threads together, so that it grows by up to the number of processors times the time that
// passes. Always 0 where the system counts in steps too long to tell what a few milliseconds took.
[[nodiscard]] std::chrono::nanoseconds processor_time();

}  // namespace brindle::host
