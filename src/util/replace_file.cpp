#include "util/replace_file.h"

#include <memory>

#include "util/skip_errors.h"

namespace brindle {
namespace {

void refuse_if_not_writable(FileSystem& files, const String& name) {
    files.open(name, OpenMode::ReadWrite)->close();
}

}  // namespace

void replace_file(FileSystem& files, const String& target,
                  const std::function<void(BinaryFile&)>& fill, bool flush) {
    const String old_file = files.resolve_links(target);
    refuse_if_not_writable(files, old_file);

    String new_file;
    std::unique_ptr<BinaryFile> file = files.create_beside(old_file, new_file);
    try {
        fill(*file);
        if (flush) {
            file->flush();
        }
        file->close();
        files.replace(new_file, old_file);
    } catch (...) {
        file.reset();  // an open file cannot be removed everywhere
        skip_errors([&] { files.remove(new_file); });
        throw;
    }
    if (flush) {
        // Not reported: the new file stands, whole and on the device. At worst a power cut in the
        // next seconds brings the old one back, as whole as before; an error would tell the host
        // that the old one stands now. Some systems and folders do not let a folder be flushed.
        skip_errors([&] { files.flush_folder_of(old_file); });
    }
}

}  // namespace brindle
