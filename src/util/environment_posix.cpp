#include "util/clock_posix.h"
#include "util/environment.h"
#include "util/file_system_posix.h"

namespace brindle {

Environment& system_environment() {
    static PosixFileSystem files;
    static PosixClock clock;
    static Environment environment{files, clock};
    return environment;
}

}  // namespace brindle
