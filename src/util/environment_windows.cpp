#include "util/clock_windows.h"
#include "util/environment.h"
#include "util/file_system_windows.h"

namespace brindle {

Environment& system_environment() {
    static WindowsFileSystem files;
    static WindowsClock clock;
    static Environment environment{files, clock};
    return environment;
}

}  // namespace brindle
