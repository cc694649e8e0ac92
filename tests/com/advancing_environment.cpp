// The environment of the DLL for tests: the disk of the machine, and a clock that the test
// advances. A scan reports its progress every half second; at full speed that is a gigabyte of
// audio.
#include "facade/com/server_environment.h"

namespace {

class AdvancingClock final : public brindle::Clock {
public:
    // Each look at it finds that much time gone by.
    double step = 0;

    double seconds() override { return now_ += step; }
    std::uint32_t milliseconds_since_start() override {
        return static_cast<std::uint32_t>(now_ * 1000);
    }
    brindle::Date local_date() override { return {2024, 5, 17}; }

private:
    double now_ = 0;
};

AdvancingClock advancing_clock;

}  // namespace

namespace brindle::com {

Environment& server_environment() {
    static Environment environment{system_environment().files, advancing_clock};
    return environment;
}

}  // namespace brindle::com

// For the test alone, beside the four functions of every such DLL.
extern "C" __declspec(dllexport) void AdvanceClockByStep(double seconds) {
    advancing_clock.step = seconds;
}
