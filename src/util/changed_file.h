#pragma once

#include "util/binary_file.h"

namespace brindle {

// Error 70 where another program has written or replaced a file since `expected` was its state.
void refuse_if_changed(const FileState& expected, const FileState& now);

}  // namespace brindle
