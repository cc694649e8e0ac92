// Giving the host its turn during long loops.
#pragma once

#include <cstdint>

#include "util/clock.h"
#include "util/file_window.h"
#include "util/host.h"
#include "util/skip_errors.h"

namespace brindle {

// A host that fails in its turn is no fault of the file that is looked at.
inline void yield_to(Host* host) {
    if (host != nullptr) {
        skip_errors([host] { host->yield(); });
    }
}

// How long ago something was done. Looks at the clock only after a block of the file was read:
// nothing else in these loops takes a time that a person could notice.
class YieldTimer {
public:
    YieldTimer(Clock& clock, const FileWindow& window)
        : clock_(clock), window_(window), since_(clock.seconds()) {}

    void restart() { since_ = clock_.seconds(); }
    // Both restart when they answer with true.
    bool at_least(double seconds) { return elapsed_since_last_block() >= seconds && again(); }
    bool longer_than(double seconds) { return elapsed_since_last_block() > seconds && again(); }

private:
    double elapsed_since_last_block() {
        if (window_.refills() == refills_) {
            return 0;
        }
        refills_ = window_.refills();
        now_ = clock_.seconds();
        return now_ - since_;
    }
    bool again() {
        since_ = now_;
        return true;
    }

    Clock& clock_;
    const FileWindow& window_;
    std::uint32_t refills_ = 0;
    double since_;
    double now_ = 0;
};

}  // namespace brindle
