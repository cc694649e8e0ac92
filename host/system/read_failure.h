// Reads that fail without an error for the file: what is printed of it is then what could be read.
#pragma once

namespace brindle::host {

// The thread could not open a file, or not read what it asked for.
void note_read_failure();
// Whether that happened since this thread asked last.
[[nodiscard]] bool take_read_failure();

}  // namespace brindle::host
