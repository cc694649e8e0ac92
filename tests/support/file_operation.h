// The operations that change a file system, as a log of them holds them.
#pragma once

#include <cstddef>
#include <variant>

#include <brindle/values.h>

#include "support/bytes.h"

namespace brindle::test {

struct Created {
    String name;
};
struct Written {
    String name;
    std::size_t offset = 0;
    Bytes bytes;
};
struct LengthSet {
    String name;
    std::size_t length = 0;
};
struct Flushed {
    String name;
};
struct Renamed {
    String from;
    String to;
};
struct Removed {
    String name;
};
struct FolderFlushed {};

using FileOperation =
    std::variant<Created, Written, LengthSet, Flushed, Renamed, Removed, FolderFlushed>;

}  // namespace brindle::test
