// How the program ends, for scripts.
#pragma once

namespace brindle::host {

enum class ExitStatus {
    AllFine = 0,
    SomeFileFailed = 1,  // also when the output could not be written
    WrongUsage = 2,
};

}  // namespace brindle::host
