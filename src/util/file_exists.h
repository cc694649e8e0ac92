#pragma once

#include <brindle/values.h>

#include "util/binary_file.h"

namespace brindle {

// True when `Path` names something on disk: a file, a folder, or, with "*" and "?" in its last
// component, anything that matches. A trailing separator names nothing, nor does the empty path.
[[nodiscard]] bool FileExists(FileSystem& files, const String& Path);

}  // namespace brindle
