// Ending early, but never in the middle of a file.
#pragma once

#include "system/exit_status.h"

namespace brindle::host {

enum class SecondSignal {
    Ends,     // the program at once: it only reads
    Ignored,  // a file is being written and is to be finished
};

// From now on SIGINT, SIGTERM, SIGHUP and SIGQUIT only leave a mark. A program that was started
// with one of them ignored, as a background job is, keeps ignoring it.
void watch_for_interruption(SecondSignal second);

[[nodiscard]] bool is_interrupted();

// 128 and the number of the signal, as shells have it.
[[nodiscard]] ExitStatus interrupted_status();

}  // namespace brindle::host
