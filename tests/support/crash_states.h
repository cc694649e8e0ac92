// The states of a folder that a power cut may leave, from the log of the operations in it.
//
// Content and length of a file are on the device after a flush of that file; until then any of its
// writes may be there, whole or in part, and the others not. What creates, renames and removes
// files is on the device after a flush of the folder; until then the first few of these operations
// may be there, in their order. Both are independent: a file may have its new name before it has
// its content.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include <brindle/values.h>

#include "support/bytes.h"
#include "support/file_operation.h"

namespace brindle::test {

using Folder = std::map<String, Bytes>;

struct CrashState {
    Folder files;
    // The power failed after the last operation.
    bool finished = false;
};

struct CrashStateOptions {
    // A write is torn at multiples of this many bytes.
    std::size_t sector = 512;
    // Up to this many unflushed writes are kept or lost in all combinations.
    std::size_t max_combined_writes = 12;
    // Any state, chosen at random, besides those that are enumerated.
    std::size_t samples = 1000;
    std::uint32_t seed = 1;
};

// Passes each different state to `visit` once. For each moment before a flush and the one after the
// last operation these are: all combinations of whole writes (the first ones in order where there
// are more than max_combined_writes); and with all other writes, or none of them, each first part,
// last part and single sector of a write, and its length without its bytes.
void for_each_crash_state(const Folder& before, const std::vector<FileOperation>& operations,
                          const CrashStateOptions& options,
                          const std::function<void(const CrashState&)>& visit);

}  // namespace brindle::test
