#include <ctime>

#include "system/processor_time.h"

namespace brindle::host {

std::chrono::nanoseconds processor_time() {
    timespec used{};
    if (clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used) != 0) {
        return {};
    }
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

}  // namespace brindle::host
