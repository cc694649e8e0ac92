#pragma once

#include <string>

namespace brindle {

// The shortest decimal text, without an exponent, that reads back as the same double. `value` is
// finite and not 0; whole numbers are exact.
[[nodiscard]] std::string shortest_decimal(double value);

}  // namespace brindle
