// Saving flushes the new file to the device, which takes far longer than all else. To see the rest
// it can be left out: the program is linked so that fsync comes here first.
#pragma once

namespace brindle::bench {

void let_flushes_through(bool through);

}  // namespace brindle::bench
