// The names of the files that a command processes.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "batch/folder_walk.h"

namespace brindle::host {

// One name for each NUL or line, as they come; nothing waits for the end of the input. Names are
// separated by NULs when the first bytes that arrive hold one (as `find -print0` writes them), or
// when that is asked for; then they may hold line feeds.
class NameInput {
public:
    explicit NameInput(bool null_separated) : by_nulls_(null_separated) {}

    // None at the end, and when the program is interrupted while it waits.
    [[nodiscard]] std::optional<FoundName> next();
    // Whether next() answers without waiting for more input.
    [[nodiscard]] bool has_name() const;

private:
    [[nodiscard]] bool is_separator(char c) const;
    // False when no more comes.
    bool fill();

    bool by_nulls_;
    bool is_first_ = true;
    bool has_failed_ = false;
    std::optional<std::string> failure_;
    std::string block_;
    std::size_t position_ = 0;
    std::string name_;
};

// The path that means the names from standard input.
inline constexpr const char* kStandardInput = "-";

struct PathOptions {
    std::vector<std::string> paths;
    bool null_separated = false;  // names from standard input end with a NUL
};

// What is done with a folder among the names from standard input.
enum class NamedFolders { Walked, Refused };

// One name after the other: of each path in turn, and of the names from standard input, the file or
// all files below the folder. A path that is a link to a folder is followed.
class NameSource {
public:
    explicit NameSource(PathOptions options, NamedFolders folders = NamedFolders::Walked);

    [[nodiscard]] std::optional<FoundName> next();
    // Whether next() may have to wait for standard input.
    [[nodiscard]] bool may_wait() const;

private:
    // The name of a file; none when a folder is entered.
    std::optional<FoundName> enter(FoundName found);

    PathOptions options_;
    NamedFolders folders_;
    std::size_t next_path_ = 0;
    std::optional<NameInput> input_;
    std::optional<FolderWalk> folder_;
};

}  // namespace brindle::host
