// Everything that an open file can be asked, as one text.
#pragma once

#include <string>

#include <brindle/cMPEGHeader.h>

namespace brindle::fuzz {

[[nodiscard]] std::u16string read_all_members(const cMPEGHeader& header);

}  // namespace brindle::fuzz
