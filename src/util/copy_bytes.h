#pragma once

#include <cstdint>

#include "util/binary_file.h"
#include "util/host.h"

namespace brindle {

// Copies `count` bytes from one file into another, where `to` ends on a border between blocks of
// the disk as often as it can. The host, if there is one, may run after every 409,600 bytes.
// Holes of a sparse file stay holes: `to` must have nothing there yet. Error 62 when `from` turns
// out to be shorter: another program has cut it.
void copy_bytes(BinaryFile& from, std::int64_t from_offset, BinaryFile& to, std::int64_t to_offset,
                std::int64_t count, Host* host = nullptr);

}  // namespace brindle
