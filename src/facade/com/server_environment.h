#pragma once

#include "util/environment.h"

namespace brindle::com {

// The disk and clock of the objects that the server makes. A build for tests has another one, whose
// clock the test advances.
[[nodiscard]] Environment& server_environment();

}  // namespace brindle::com
