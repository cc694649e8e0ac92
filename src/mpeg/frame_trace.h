// Why the walks turn a header down, told afterwards: they themselves decode by table.
#pragma once

#include <cstdint>

#include "mpeg/trace.h"

namespace brindle {

// The rule that a header breaks on its own.
void trace_broken_rule(std::uint32_t bits, const Trace& trace);

// The rule that keeps a header out of the chain of `first`: one of its own, the first thing on
// which the two do not agree, or, without such a one, the end of the file inside the frame.
void trace_rejected(std::uint32_t first, std::uint32_t bits, const Trace& trace);

}  // namespace brindle
