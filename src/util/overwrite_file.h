// Changing a file in place: all of the change or nothing of it, as far as the system lets it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "util/binary_file.h"

namespace brindle {

// New bytes for one place of a file. They may reach past its end.
struct Overwrite {
    std::int64_t offset = 0;
    std::span<const std::uint8_t> bytes;
    // The bytes there now, up to the end of the file.
    std::span<const std::uint8_t> old_bytes;
};

// Writes the pieces in their order into a file that is open for writing, flushes them to the device
// and closes the file. `expected` is the state of the file in which the old bytes were read; where
// it differs from that of now, error 70 is raised and nothing is written. Without pieces nothing
// is done.
//
// When a write fails, what stood there is written back, the file is cut to its old length, and the
// error is raised as it came. When that fails too, its text says so: the file then holds part of
// the new bytes. When the flush fails, error 57 says that all is written, but perhaps not on the
// device.
//
// A file that is to become shorter is cut to `new_length` after its pieces.
void overwrite_file(BinaryFile& file, const FileState& expected, std::span<const Overwrite> pieces,
                    std::optional<std::int64_t> new_length = std::nullopt);

}  // namespace brindle
