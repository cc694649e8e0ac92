// Everything that an open file can be asked, as one text.
#pragma once

#include <brindle/cMPEGHeader.h>

namespace brindle::fuzz {

[[nodiscard]] String read_all_members(const cMPEGHeader& header);

}  // namespace brindle::fuzz
