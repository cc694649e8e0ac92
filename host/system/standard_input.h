// Bytes from standard input.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace brindle::host {

// Fills `block` with what has come, up to `count` bytes; an empty block is the end, also when the
// program was interrupted while it waited. The answer is why it could not be read, or nothing.
[[nodiscard]] std::optional<std::string> read_input(std::string& block, std::size_t count);

}  // namespace brindle::host
