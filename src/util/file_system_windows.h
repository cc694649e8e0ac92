#pragma once

#include <memory>

#include "util/binary_file.h"

namespace brindle {

// The files of this machine. Holds no state.
class WindowsFileSystem final : public FileSystem {
public:
    std::unique_ptr<BinaryFile> open(const String& name, OpenMode mode) override;
    bool exists(const String& name) override;
    String resolve_links(const String& name) override;
    void require_writable(const String& name) override;
    FileState state(const String& name) override;
    std::unique_ptr<BinaryFile> create_beside(const String& neighbour, String& name) override;
    void copy_attributes(const String& from, BinaryFile& to) override;
    bool clone(BinaryFile& from, BinaryFile& to) override;
    void remove(const String& name) override;
    void replace(const String& from, const String& to) override;
    void flush_folder_of(const String& name) override;
};

}  // namespace brindle
