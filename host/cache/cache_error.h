#pragma once

#include <stdexcept>

namespace brindle::host {

// The file cannot be the cache of a run: its name and why.
class CacheError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace brindle::host
