#include "system/read_failure.h"

#include <utility>

namespace brindle::host {

namespace {

// A file is read by one thread from begin to end.
thread_local bool has_failed = false;

}  // namespace

void note_read_failure() {
    has_failed = true;
}

bool take_read_failure() {
    return std::exchange(has_failed, false);
}

}  // namespace brindle::host
