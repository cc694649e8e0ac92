#pragma once

#include "util/clock.h"

namespace brindle {

class WindowsClock final : public Clock {
public:
    double seconds() override;
    std::uint32_t milliseconds_since_start() override;
    Date local_date() override;
};

}  // namespace brindle
