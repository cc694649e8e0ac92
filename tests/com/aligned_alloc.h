// Windows has no aligned memory that free() takes back. Nothing here asks for any; whatever should
// begin to gets none, and says so.
#pragma once

#include <cstddef>

namespace std {

inline void* aligned_alloc(size_t /*alignment*/, size_t /*size*/) {
    return nullptr;
}

}  // namespace std
