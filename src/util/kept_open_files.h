#pragma once

#include <memory>

#include "util/binary_file.h"

namespace brindle {

// The files of another file system for what only reads them. The one that was opened last stays
// open: who opens it again gets the same file, even if another has taken its name. What would
// change a file raises error 5.
class KeptOpenFiles final : public FileSystem {
public:
    explicit KeptOpenFiles(FileSystem& files) noexcept : files_(files) {}

    // Null before any was opened, and where the last could not be.
    [[nodiscard]] BinaryFile* last_opened() const noexcept { return last_opened_.get(); }

    std::unique_ptr<BinaryFile> open(const String& name, OpenMode mode) override;
    bool exists(const String& name) override { return files_.exists(name); }
    String resolve_links(const String& name) override { return files_.resolve_links(name); }
    FileState state(const String& name) override { return files_.state(name); }

    void require_writable(const String& name) override;
    std::unique_ptr<BinaryFile> create_beside(const String& neighbour, String& name) override;
    void copy_attributes(const String& from, BinaryFile& to) override;
    bool clone(BinaryFile& from, BinaryFile& to) override;
    void remove(const String& name) override;
    void replace(const String& from, const String& to) override;
    void flush_folder_of(const String& name) override;

private:
    FileSystem& files_;
    String name_;
    std::shared_ptr<BinaryFile> last_opened_;
};

}  // namespace brindle
