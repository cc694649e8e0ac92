// The only access to the disk. Tests replace it by a file system that counts or fails.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include <brindle/values.h>

#include "util/byte_range.h"

namespace brindle {

// Which file it is and what of it changes with every write: two equal states of one name mean that
// no other program has changed or replaced the file in between.
struct FileState {
    std::uint64_t volume = 0;
    std::uint64_t number = 0;  // of the file on its volume
    std::int64_t length = 0;
    std::int64_t modified = 0;  // in the system's own unit

    friend bool operator==(const FileState&, const FileState&) = default;
};

enum class ReadOrder {
    Scattered,   // short pieces here and there
    Sequential,  // a long range from its beginning to its end
};

// An open regular file, read and written at 0-based positions. Every member raises Error.
class BinaryFile {
public:
    BinaryFile() = default;
    BinaryFile(const BinaryFile&) = delete;
    BinaryFile& operator=(const BinaryFile&) = delete;
    // Closes without a report when close() was not called.
    virtual ~BinaryFile() = default;

    // Asks the system each time: another program may have changed the file.
    [[nodiscard]] virtual std::int64_t length() = 0;
    [[nodiscard]] virtual FileState state() = 0;
    // How the next bytes will be read: the system then reads ahead only what is needed.
    virtual void expect_reads(ReadOrder order) { static_cast<void>(order); }
    // Fills `into` from `offset`; fewer bytes than asked for only at the end of the file.
    virtual std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) = 0;
    // The same into two places, one after the other: in one call where the system has such a call.
    virtual std::size_t read_scattered_at(std::int64_t offset, std::span<std::uint8_t> first,
                                          std::span<std::uint8_t> second) {
        const std::size_t count = read_at(offset, first);
        if (count < first.size()) {
            return count;
        }
        return count + read_at(offset + static_cast<std::int64_t>(count), second);
    }
    // Writes all bytes or raises (61 disk full, 57 device).
    virtual void write_at(std::int64_t offset, std::span<const std::uint8_t> bytes) = 0;
    // Copies up to `count` bytes of `source` to `offset` of this file, through the kernel where
    // it can; the number copied, 0 at the end of `source`.
    virtual std::size_t copy_from(BinaryFile& source, std::int64_t source_offset,
                                  std::int64_t offset, std::size_t count) = 0;
    // The first part of `range` that holds data, cut to `range`; empty at its end when there is
    // none. The rest are holes of a sparse file, which read as zeros and take no space.
    [[nodiscard]] virtual ByteRange data_in(const ByteRange& range) { return range; }
    // Cuts the file, or extends it with zeros.
    virtual void set_length(std::int64_t length) = 0;
    // To the device, so that a power cut loses nothing of it: content, length and attributes.
    virtual void flush() = 0;
    // The same for content and length alone, which is less work.
    virtual void flush_data() = 0;
    // Reports what the system had put off until now. The file is closed in any case.
    virtual void close() = 0;
};

enum class OpenMode {
    Read,               // must exist
    ReadWrite,          // must exist
    ReadWriteOrCreate,  // created empty when missing
};

// Opening and naming files. Names are wide; elsewhere than on Windows they are UTF-8 on disk.
class FileSystem {
public:
    FileSystem() = default;
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;
    virtual ~FileSystem() = default;

    // Never blocks on a pipe or a device: what is no regular file is error 75.
    virtual std::unique_ptr<BinaryFile> open(const String& name, OpenMode mode) = 0;
    // True when some entry matches; "*" and "?" in the last component are wildcards. No errors.
    virtual bool exists(const String& name) = 0;
    // The file that a name refers to, with all symbolic links followed.
    virtual String resolve_links(const String& name) = 0;
    // Raises what keeps the file from being written, without opening it (53, 70, 75).
    virtual void require_writable(const String& name) = 0;
    // The current state of the file that a name refers to.
    [[nodiscard]] virtual FileState state(const String& name) = 0;
    // A new, empty file of a unique name in the folder of `neighbour`, which nobody but the owner
    // can open where the system has access rights. `name` receives its name.
    virtual std::unique_ptr<BinaryFile> create_beside(const String& neighbour, String& name) = 0;
    // Gives a file made by create_beside() the access rights of `from`, never wider ones, and its
    // user attributes as far as the system lets it. Does nothing on Windows, where a new file has
    // the rights that its folder gives.
    virtual void copy_attributes(const String& from, BinaryFile& to) = 0;
    // Makes the empty file `to` share the content of `from`; false where the system cannot.
    virtual bool clone(BinaryFile& from, BinaryFile& to) = 0;
    virtual void remove(const String& name) = 0;
    // Gives the file `from` the name `to` in one step; an existing `to` is replaced.
    virtual void replace(const String& from, const String& to) = 0;
    // Makes a finished replace() of a file in the same folder survive a power cut.
    virtual void flush_folder_of(const String& name) = 0;
};

}  // namespace brindle
