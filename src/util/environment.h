// The outside world of one object: disk and time. Chosen at construction, never global.
#pragma once

#include "util/binary_file.h"
#include "util/clock.h"

namespace brindle {

struct Environment {
    FileSystem& files;
    Clock& clock;
};

// The machine's own. Holds no state, so objects on any number of threads share it.
Environment& system_environment();

}  // namespace brindle
