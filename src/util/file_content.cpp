#include "util/file_content.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include <brindle/error.h>

#include "util/copy_bytes.h"

namespace brindle {

namespace {

[[noreturn]] void refuse() {
    throw Error(RuntimeError::InvalidCall);
}

}  // namespace

void FileContent::append(std::span<const std::uint8_t> bytes) {
    append_piece({.size = static_cast<std::int64_t>(bytes.size()), .bytes = bytes.data()});
}

void FileContent::append(BinaryFile& file, const ByteRange& range) {
    append_piece({.size = range.length(), .file = &file, .offset = range.begin});
}

void FileContent::append(const FileContent& other, const ByteRange& range) {
    for (Piece piece : other.pieces_) {
        const std::int64_t skipped = std::max<std::int64_t>(range.begin - piece.begin, 0);
        const std::int64_t end = std::min(piece.begin + piece.size, range.end);
        piece.size = end - piece.begin - skipped;
        piece.offset += skipped;
        piece.bytes += piece.bytes != nullptr && piece.size > 0 ? skipped : 0;
        append_piece(piece);
    }
}

void FileContent::append_piece(Piece piece) {
    if (piece.size <= 0) {
        return;
    }
    piece.begin = size_;
    pieces_.push_back(piece);
    size_ += piece.size;
}

std::size_t FileContent::read_at(std::int64_t offset, std::span<std::uint8_t> into) const {
    std::size_t done = 0;
    for (const Piece& piece : pieces_) {
        const std::int64_t skipped = offset + static_cast<std::int64_t>(done) - piece.begin;
        if (skipped < 0 || skipped >= piece.size || done == into.size()) {
            continue;
        }
        const auto count = static_cast<std::size_t>(std::min<std::int64_t>(
            piece.size - skipped, static_cast<std::int64_t>(into.size() - done)));
        const auto part = into.subspan(done, count);
        if (piece.bytes != nullptr) {
            std::memcpy(part.data(), piece.bytes + skipped, count);
            done += count;
            continue;
        }
        const std::size_t read = piece.file->read_at(piece.offset + skipped, part);
        done += read;
        if (read < count) {
            break;  // another program has cut the file
        }
    }
    return done;
}

void FileContent::copy_to(BinaryFile& to, Host* host) const {
    for (const Piece& piece : pieces_) {
        if (piece.bytes != nullptr) {
            to.write_at(piece.begin, {piece.bytes, static_cast<std::size_t>(piece.size)});
        } else {
            copy_bytes(*piece.file, piece.offset, to, piece.begin, piece.size, host);
        }
    }
}

FileState ContentFile::state() {
    return {.length = content_.size()};
}

std::size_t ContentFile::read_at(std::int64_t offset, std::span<std::uint8_t> into) {
    return content_.read_at(offset, into);
}

void ContentFile::write_at(std::int64_t /*offset*/, std::span<const std::uint8_t> /*bytes*/) {
    refuse();
}

std::size_t ContentFile::copy_from(BinaryFile& /*source*/, std::int64_t /*source_offset*/,
                                   std::int64_t /*offset*/, std::size_t /*count*/) {
    refuse();
}

void ContentFile::set_length(std::int64_t /*length*/) {
    refuse();
}

void ContentFile::flush() {
    refuse();
}

void ContentFile::flush_data() {
    refuse();
}

}  // namespace brindle
