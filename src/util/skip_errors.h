// Skip-and-continue: hosts see defaults, not errors, for bad values and missing files.
#pragma once

#include <new>
#include <utility>

#include <brindle/error.h>

namespace brindle {

// Runs one statement; a failing one is skipped and the next statement runs. True when it completed.
template <typename Statement>
bool skip_errors(Statement&& statement) {
    try {
        std::forward<Statement>(statement)();
        return true;
    } catch (const Error&) {
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace brindle
