// Files as the system sees them, before and beside the library's reading.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace brindle::host {

// Why a file can't be read as one, or nothing and its size. It is not opened: a FIFO would wait for
// a writer, and a device may act on being opened.
[[nodiscard]] std::optional<std::string> reason_against_file(const std::string& name,
                                                             std::int64_t& size);

// Why it can't be opened, or nothing.
[[nodiscard]] std::optional<std::string> reason_against_reading(const std::string& name);

// Why it can't be written, or nothing; and why no other file can take its place.
[[nodiscard]] std::optional<std::string> reason_against_writing(const std::string& name);
[[nodiscard]] std::optional<std::string> reason_against_replacing(const std::string& name);

// A file's bytes. It is opened by the first read, and then stays open.
class ReadOnlyFile {
public:
    explicit ReadOnlyFile(std::string name);
    ~ReadOnlyFile();
    ReadOnlyFile(const ReadOnlyFile&) = delete;
    ReadOnlyFile& operator=(const ReadOnlyFile&) = delete;

    // `count` bytes from an offset on, fewer where the file ends or can't be read.
    [[nodiscard]] std::string read(std::int64_t offset, std::size_t count);

private:
    struct Handle;
    std::string name_;
    std::unique_ptr<Handle> handle_;
};

// The same of a file that is read once.
[[nodiscard]] std::string read_bytes(const std::string& name, std::int64_t offset,
                                     std::size_t count);

}  // namespace brindle::host
