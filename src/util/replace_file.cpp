#include "util/replace_file.h"

#include <memory>

#include "util/changed_file.h"
#include "util/skip_errors.h"

namespace brindle {

void replace_file(FileSystem& files, const String& target,
                  const std::function<void(BinaryFile&)>& fill, const ReplaceOptions& options) {
    const String old_file = files.resolve_links(target);
    files.require_writable(old_file);

    String new_file;
    std::unique_ptr<BinaryFile> file = files.create_beside(old_file, new_file);
    try {
        fill(*file);
        files.copy_attributes(old_file, *file);
        if (options.flush) {
            file->flush();
        }
        file->close();
        if (options.expected) {
            refuse_if_changed(*options.expected, files.state(old_file));
        }
        if (options.before_rename) {
            options.before_rename();
        }
        files.replace(new_file, old_file);
    } catch (...) {
        file.reset();  // an open file cannot be removed everywhere
        skip_errors([&] { files.remove(new_file); });
        throw;
    }
    if (options.flush) {
        // Not reported: the new file is in place, complete and on the device. At worst a power cut
        // in the next seconds brings the old one back, as whole as before; an error would tell the
        // host that the old one is in place. Some systems cannot flush a folder.
        skip_errors([&] { files.flush_folder_of(old_file); });
    }
}

}  // namespace brindle
