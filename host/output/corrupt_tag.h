// Title and artist of a file whose tag hosts cannot read to its end.
#pragma once

#include <brindle/cMPEGHeader.h>

namespace brindle::host {

// The library puts a stamp in the place of title and artist; a title that merely says the same
// stands in its frame.
[[nodiscard]] bool is_corrupt(const cMPEGHeader& header);

// As hosts read them. The stamp has no date and time, so that two runs say the same.
[[nodiscard]] String title_of(const cMPEGHeader& header);
[[nodiscard]] String artist_of(const cMPEGHeader& header);

}  // namespace brindle::host
