#pragma once

#include <memory>
#include <vector>

#include <brindle/values.h>

#include "support/temporary_folder.h"

namespace brindle::test {

// What is no ordinary file, under the name of a music file: each system has its own kinds.
struct SpecialFile {
    struct Made {
        String name;
        std::shared_ptr<void> kept_open;  // what has to be for the name to exist
    };

    const char* kind;
    Made (*make)(const TemporaryFolder& folder);
};

[[nodiscard]] std::vector<SpecialFile> special_files();

}  // namespace brindle::test
