#pragma once

#include "support/fake_clock.h"
#include "support/memory_files.h"
#include "util/environment.h"

namespace brindle::test {

// A separate environment for one test: files in memory and a clock that does not advance.
struct MemoryEnvironment {
    MemoryFiles files;
    FakeClock clock;
    Environment environment{files, clock};
};

}  // namespace brindle::test
