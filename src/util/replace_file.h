// The one way in which a file is written anew: the old one is whole until the new one is.
#pragma once

#include <functional>

#include <brindle/values.h>

#include "util/binary_file.h"

namespace brindle {

// Puts a new file in the place of `target`. `fill` writes it, and closes whatever it holds open of
// the old one: some systems do not give the name of an open file to another.
//
// At every instant the complete old file or the complete new one stands under the name. When
// anything fails before that instant, no new file is left behind, the old one is untouched and the
// error is raised as it came. A symbolic link stays a link; what it names is replaced. A target
// that is missing or may not be written is refused before anything is created. The new file has
// the attributes of a new file.
//
// Without `flush` a power cut may cost both files, so only tests and scratch copies do without.
void replace_file(FileSystem& files, const String& target,
                  const std::function<void(BinaryFile&)>& fill, bool flush = true);

}  // namespace brindle
