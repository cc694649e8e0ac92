// Saving flushes the new file to the device, which takes far longer than all else. To measure the
// rest, it can be switched off: the program is linked so that fsync is called here first.
#pragma once

namespace brindle::bench {

void let_flushes_through(bool through);

}  // namespace brindle::bench
