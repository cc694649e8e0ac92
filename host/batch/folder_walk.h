// The MP3 and MP2 files below a folder.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "system/found_name.h"

namespace brindle::host {

// Goes through a folder and all below it, in the order of the bytes of the paths. One listing of
// each folder on the current path is kept, never the whole tree. Links to folders are not followed,
// so that no loop can be; links to files are. Files created or deleted meanwhile may or may not be
// seen; a folder that can't be listed is named with the reason.
class FolderWalk {
public:
    explicit FolderWalk(const std::string& folder);

    [[nodiscard]] std::optional<FoundName> next();

private:
    // The reason when not all of it could be listed.
    std::optional<std::string> list(const std::string& folder);

    // From the last to the next. Folders end with "/", which is also their place in the order.
    std::vector<std::vector<std::string>> levels_;
};

}  // namespace brindle::host
