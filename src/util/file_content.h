#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <brindle/new_content.h>

#include "util/binary_file.h"
#include "util/byte_range.h"
#include "util/byte_source.h"
#include "util/file_for_reading.h"
#include "util/host.h"

namespace brindle {

// The content of a file that does not exist yet: bytes of memory, ranges of open files and bytes
// that are made while they are read, one after the other. Copies share what they are made of.
class FileContent {
public:
    // What is empty adds nothing. Spans and files must stay where they are.
    void append(std::span<const std::uint8_t> bytes);
    void append(BinaryFile& file, const ByteRange& range);
    void append(const FileContent& other, const ByteRange& range);
    void append(const FileContent& other) { append(other, {0, other.size()}); }
    void append_owned(std::vector<std::uint8_t> bytes);
    void append_zeros(std::int64_t count);
    // `size` bytes of the source from its start.
    void append(std::shared_ptr<const ByteSource> source, std::int64_t size);

    [[nodiscard]] std::int64_t size() const noexcept { return size_; }
    // Writes all of it to `to` from `offset` on, where there are no bytes yet. The host may run now
    // and then, see copy_bytes().
    void copy_to(BinaryFile& to, std::int64_t offset, Host* host) const;
    // All of it in memory.
    [[nodiscard]] std::vector<std::uint8_t> read_all() const { return read({0, size_}); }
    [[nodiscard]] std::vector<std::uint8_t> read(const ByteRange& range) const;

    // All of it, around the last range of the file that it holds.
    [[nodiscard]] NewContent around_last_range_of(const BinaryFile& file) const;

    // The parts that, placed at `offset` of the file, are not known to be there already.
    struct Part {
        ByteRange range;
        bool is_of_file = false;  // it is elsewhere in the file
    };
    [[nodiscard]] std::vector<Part> parts_apart_from(const BinaryFile& file,
                                                     std::int64_t offset) const;

private:
    friend class ContentFile;

    struct Piece {
        std::int64_t begin = 0;  // here
        std::int64_t size = 0;
        // One of these, or zeros; the offset is that of the piece in the file or the source.
        const std::uint8_t* bytes = nullptr;
        BinaryFile* file = nullptr;
        std::shared_ptr<const ByteSource> source = nullptr;
        std::int64_t offset = 0;
        std::shared_ptr<const std::vector<std::uint8_t>> owned = nullptr;
    };
    void append_piece(Piece piece);
    // The piece that the byte lies in.
    [[nodiscard]] std::vector<Piece>::const_iterator piece_at(std::int64_t offset) const;

    std::vector<Piece> pieces_;
    std::int64_t size_ = 0;
};

// Reads such a content as if the file were there.
class ContentFile final : public FileForReading {
public:
    explicit ContentFile(const FileContent& content) noexcept : content_(content) {}

    std::int64_t length() override { return content_.size(); }
    FileState state() override;
    std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) override;

private:
    std::size_t read_piece(const FileContent::Piece& piece, std::int64_t offset,
                           std::span<std::uint8_t> into);
    std::size_t read_source(const FileContent::Piece& piece, std::int64_t offset,
                            std::span<std::uint8_t> into);

    const FileContent& content_;
    // End of the last read of a source: the next one usually continues there.
    const ByteSource* open_source_ = nullptr;
    std::unique_ptr<ByteStream> stream_;
    std::int64_t stream_offset_ = 0;
};

}  // namespace brindle
