// What `brindle set` was told to do.
#pragma once

#include <string>
#include <vector>

#include "commands/edits.h"

namespace brindle::host {

struct SetOptions {
    std::vector<Edit> edits;
    bool separate = false;
    bool dry_run = false;
    bool preserve = false;
    bool force = false;
    bool atomic = false;
    bool unicode = false;
    bool host_form = false;
    std::vector<std::string> files;
};

}  // namespace brindle::host
