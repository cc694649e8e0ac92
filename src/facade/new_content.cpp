#include <brindle/new_content.h>

#include "id3v2/error_sources.h"
#include "util/environment.h"
#include "util/write_content.h"

namespace brindle {

void write_content(const String& file_name, const NewContent& content, const SaveOptions& options) {
    with_writer_memory([&] {
        as_writer([&] { write_content(system_environment().files, file_name, content, options); });
    });
}

}  // namespace brindle
