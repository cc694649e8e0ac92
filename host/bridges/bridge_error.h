#pragma once

#include <stdexcept>

namespace brindle::host {

// Points cannot be converted, or fields of another system cannot be read or changed; what() is the
// reason.
class BridgeError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace brindle::host
