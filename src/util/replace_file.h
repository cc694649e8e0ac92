// The only way to rewrite a file: the old one is complete until the new one is.
#pragma once

#include <functional>
#include <optional>

#include <brindle/values.h>

#include "util/binary_file.h"

namespace brindle {

struct ReplaceOptions {
    // Without it a power cut may cost both files, so only tests and scratch copies do without.
    bool flush = true;
    // The state of the target when it was read. Another one right before the rename is error 70.
    std::optional<FileState> expected = std::nullopt;
    // Called right before the rename. What it throws ends the replacement.
    std::function<void()> before_rename = nullptr;
};

// Puts a new file in the place of `target`. `fill` writes it, and closes whatever it holds open of
// the old one: some systems do not give the name of an open file to another.
//
// At every instant the name refers to the complete old file or the complete new one. When
// anything fails before that instant, no new file is left, the old one is untouched and the
// error is raised as it came. A symbolic link stays a link; what it names is replaced. A target
// that is missing or may not be written is refused before anything is created. The new file has
// the access rights of the old one (on Windows those of a new file).
void replace_file(FileSystem& files, const String& target,
                  const std::function<void(BinaryFile&)>& fill, const ReplaceOptions& options = {});

}  // namespace brindle
