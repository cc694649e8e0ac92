// Files as the system sees them, before and beside the library's reading.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace brindle::host {

enum class FileKind { Regular, Folder, Other };

struct FileStatus {
    FileKind kind = FileKind::Other;
    std::int64_t size = 0;
    std::int64_t modified = 0;  // seconds since 1970
};

// What the system says of a name, links followed; the answer is why it says nothing. The file is
// not opened: a FIFO would wait for a writer, and a device may act on being opened.
[[nodiscard]] std::optional<std::string> read_status(const std::string& name, FileStatus& status);

// Why a file of this status can't be read as one, or nothing.
[[nodiscard]] std::optional<std::string> reason_against(const FileStatus& status);
// The same for the file of a name, and its size.
[[nodiscard]] std::optional<std::string> reason_against_file(const std::string& name,
                                                             std::int64_t& size);

// Why it can't be opened, or nothing.
[[nodiscard]] std::optional<std::string> reason_against_reading(const std::string& name);

// Why it can't be written, or nothing; and why no other file can take its place.
[[nodiscard]] std::optional<std::string> reason_against_writing(const std::string& name);
[[nodiscard]] std::optional<std::string> reason_against_replacing(const std::string& name);

// A file's bytes.
class FileBytes {
public:
    FileBytes() = default;
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;
    virtual ~FileBytes() = default;

    // `count` bytes from an offset on, fewer only where the file ends. Raises Error where it can't
    // be read.
    [[nodiscard]] virtual std::string read(std::int64_t offset, std::size_t count) = 0;
};

// A file that is opened by the first read, and then stays open.
class ReadOnlyFile final : public FileBytes {
public:
    explicit ReadOnlyFile(std::string name);
    ~ReadOnlyFile() override;
    ReadOnlyFile(const ReadOnlyFile&) = delete;
    ReadOnlyFile& operator=(const ReadOnlyFile&) = delete;

    [[nodiscard]] std::string read(std::int64_t offset, std::size_t count) override;

private:
    struct Handle;
    std::string name_;
    std::unique_ptr<Handle> handle_;
};

// The same of a file that is read once.
[[nodiscard]] std::string read_bytes(const std::string& name, std::int64_t offset,
                                     std::size_t count);

}  // namespace brindle::host
