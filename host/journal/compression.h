#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "journal/byte_fields.h"

namespace brindle::host {

[[nodiscard]] JournalBytes compressed(std::span<const std::uint8_t> bytes);
// Nothing where the bytes are not compressed ones, or do not become `length` bytes exactly. Memory
// is taken as the bytes come, so that the length alone claims none.
[[nodiscard]] std::optional<JournalBytes> decompressed(std::span<const std::uint8_t> bytes,
                                                       std::size_t length);

}  // namespace brindle::host
