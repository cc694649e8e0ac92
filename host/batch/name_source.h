// The files that a command is to look at.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "batch/folder_walk.h"
#include "batch/found_name.h"
#include "batch/name_input.h"

namespace brindle::host {

// A path that stands for the names from standard input.
inline constexpr const char* kStandardInput = "-";

// One name after the other: of each path in turn, and of the names from standard input, the file or
// all files below the folder. A path that is a link to a folder stands for the folder.
class NameSource {
public:
    NameSource(std::vector<std::string> paths, bool null_separated);

    [[nodiscard]] std::optional<FoundName> next();

private:
    // The name of a file; none when a folder is entered.
    std::optional<FoundName> enter(FoundName found);

    std::vector<std::string> paths_;
    std::size_t next_path_ = 0;
    bool null_separated_;
    std::optional<NameInput> input_;
    std::optional<FolderWalk> folder_;
};

}  // namespace brindle::host
