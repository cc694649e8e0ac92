#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "util/binary_file.h"
#include "util/byte_range.h"
#include "util/host.h"

namespace brindle {

// The content of a file that does not exist yet: bytes of memory and ranges of open files, one
// after the other. All of them must stay where they are.
class FileContent {
public:
    // What is empty adds nothing.
    void append(std::span<const std::uint8_t> bytes);
    void append(BinaryFile& file, const ByteRange& range);
    void append(const FileContent& other, const ByteRange& range);

    [[nodiscard]] std::int64_t size() const noexcept { return size_; }
    // As BinaryFile::read_at().
    std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) const;
    // Writes all of it into an empty file. The host may run now and then, see copy_bytes().
    void copy_to(BinaryFile& to, Host* host) const;

private:
    struct Piece {
        std::int64_t begin = 0;  // here
        std::int64_t size = 0;
        const std::uint8_t* bytes = nullptr;  // of memory, else null
        BinaryFile* file = nullptr;
        std::int64_t offset = 0;  // in the file
    };
    void append_piece(Piece piece);

    std::vector<Piece> pieces_;
    std::int64_t size_ = 0;
};

// Reads such a content as if the file were there. Whatever would change it raises error 5.
class ContentFile final : public BinaryFile {
public:
    explicit ContentFile(const FileContent& content) noexcept : content_(content) {}

    std::int64_t length() override { return content_.size(); }
    FileState state() override;
    std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) override;
    void write_at(std::int64_t offset, std::span<const std::uint8_t> bytes) override;
    std::size_t copy_from(BinaryFile& source, std::int64_t source_offset, std::int64_t offset,
                          std::size_t count) override;
    void set_length(std::int64_t length) override;
    void flush() override;
    void flush_data() override;
    // The files belong to the caller.
    void close() override {}

private:
    const FileContent& content_;
};

}  // namespace brindle
