#pragma once

#include <cstdint>

#include <brindle/error.h>

namespace brindle::test {

// The number of the Error that a statement raises; 0 when it completes.
template <typename Statement>
std::int32_t error_number(Statement statement) {
    try {
        statement();
        return 0;
    } catch (const Error& error) {
        return error.number();
    }
}

}  // namespace brindle::test
