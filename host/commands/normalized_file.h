// What `brindle normalize` does to one file besides the form of its texts.
#pragma once

#include <memory>
#include <string>

#include "commands/file_work.h"
#include "commands/normalized_pictures.h"

namespace brindle::host {

struct NormalizeOptions {
    PictureOptions pictures;
    bool strips_foreign = false;
    std::string code_page;  // of texts to repair; "" for none
};

[[nodiscard]] std::unique_ptr<FileWork> normalize_file(const std::string& name,
                                                       const NormalizeOptions& options);

}  // namespace brindle::host
