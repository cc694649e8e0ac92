#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "util/binary_file.h"

namespace brindle {

// A block of memory for copies, taken when the first one needs it.
using CopyBlock = std::unique_ptr<std::uint8_t[]>;

// Copies up to `count` bytes from one file to another, each write but the last one ending where a
// page of the disk ends; the number copied, smaller only at the end of `from`.
std::size_t copy_through_memory(BinaryFile& from, std::int64_t from_offset, BinaryFile& to,
                                std::int64_t to_offset, std::size_t count, CopyBlock& block);

}  // namespace brindle
