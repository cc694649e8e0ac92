// Opening a file, with the reason when it can't be.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <brindle/cMPEGHeader.h>

namespace brindle::host {

// Whether files of that name are read: what the header itself asks for, a dot not included.
[[nodiscard]] bool ends_in_mp3_or_mp2(std::string_view name);

// Reads the file of this name (as the system gives it) into `header`. The answer is why that could
// not be done, or nothing. The header itself is silent about files that it can't open: it reads as
// if they were empty.
[[nodiscard]] std::optional<std::string> open_file(cMPEGHeader& header, const std::string& name);
// Also tells the size of the file, as far as it is known.
[[nodiscard]] std::optional<std::string> open_file(cMPEGHeader& header, const std::string& name,
                                                   std::int64_t& size);

}  // namespace brindle::host
