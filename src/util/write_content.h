#pragma once

#include <brindle/new_content.h>
#include <brindle/values.h>

#include "util/binary_file.h"

namespace brindle {

// As <brindle/new_content.h> has it.
void write_content(FileSystem& files, const String& name, const NewContent& content,
                   const SaveOptions& options);

}  // namespace brindle
