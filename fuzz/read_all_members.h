// The values of all members of an open file, as one text.
#pragma once

#include <brindle/cMPEGHeader.h>

namespace brindle::fuzz {

[[nodiscard]] String read_all_members(const cMPEGHeader& header);

}  // namespace brindle::fuzz
