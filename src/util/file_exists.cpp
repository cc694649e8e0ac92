#include "util/file_exists.h"

namespace brindle {

bool FileExists(FileSystem& files, const String& Path) {
    return files.exists(Path);
}

}  // namespace brindle
