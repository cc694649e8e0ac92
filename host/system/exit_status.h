// How the program ends, for scripts.
#pragma once

namespace brindle::host {

enum class ExitStatus {
    AllFine = 0,
    SomeFileFailed = 1,  // or is bad; also when the output could not be written
    WrongUsage = 2,
    Interrupted = 130,  // by SIGINT; 143 by SIGTERM
};

}  // namespace brindle::host
