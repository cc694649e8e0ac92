#pragma once

namespace brindle {

// What was being done when the system refused: a missing right is a different error to a host
// that opens a file and to one that removes it.
enum class FileAction {
    Open,      // or create
    Name,      // remove, rename
    Transfer,  // read, write, measure, flush, close
};

}  // namespace brindle
