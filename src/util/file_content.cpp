#include "util/file_content.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include <brindle/error.h>

#include "util/copy_bytes.h"

namespace brindle {

namespace {

constexpr std::size_t kBlock = std::size_t{64} * 1024;

}  // namespace

void FileContent::append(std::span<const std::uint8_t> bytes) {
    append_piece({.size = static_cast<std::int64_t>(bytes.size()), .bytes = bytes.data()});
}

void FileContent::append(BinaryFile& file, const ByteRange& range) {
    append_piece({.size = range.length(), .file = &file, .offset = range.begin});
}

void FileContent::append(std::shared_ptr<const ByteSource> source, std::int64_t size) {
    append_piece({.size = size, .source = std::move(source)});
}

void FileContent::append_owned(std::vector<std::uint8_t> bytes) {
    const auto owned = std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
    append_piece(
        {.size = static_cast<std::int64_t>(owned->size()), .bytes = owned->data(), .owned = owned});
}

void FileContent::append_zeros(std::int64_t count) {
    append_piece({.size = count});
}

void FileContent::append(const FileContent& other, const ByteRange& range) {
    for (auto next = other.piece_at(range.begin);
         next != other.pieces_.end() && next->begin < range.end; ++next) {
        Piece piece = *next;
        const std::int64_t skipped = std::max<std::int64_t>(range.begin - piece.begin, 0);
        const std::int64_t end = std::min(piece.begin + piece.size, range.end);
        piece.size = end - piece.begin - skipped;
        piece.offset += skipped;
        piece.bytes += piece.bytes != nullptr && piece.size > 0 ? skipped : 0;
        append_piece(std::move(piece));
    }
}

void FileContent::append_piece(Piece piece) {
    if (piece.size <= 0) {
        return;
    }
    piece.begin = size_;
    size_ += piece.size;
    if (!pieces_.empty() && piece.file != nullptr && pieces_.back().file == piece.file &&
        pieces_.back().offset + pieces_.back().size == piece.offset) {
        pieces_.back().size += piece.size;
    } else {
        pieces_.push_back(std::move(piece));
    }
}

std::vector<FileContent::Piece>::const_iterator FileContent::piece_at(std::int64_t offset) const {
    const auto after = std::upper_bound(
        pieces_.begin(), pieces_.end(), offset,
        [](std::int64_t wanted, const Piece& piece) { return wanted < piece.begin; });
    return after == pieces_.begin() ? after : std::prev(after);
}

void FileContent::copy_to(BinaryFile& to, std::int64_t offset, Host* host) const {
    ContentFile content(*this);
    for (auto piece = pieces_.begin(); piece != pieces_.end();) {
        if (piece->file != nullptr) {
            copy_bytes(*piece->file, piece->offset, to, offset + piece->begin, piece->size, host);
            ++piece;
            continue;
        }
        // Neighbours go together, as few large writes.
        const auto end =
            std::find_if(piece, pieces_.end(), [](const Piece& p) { return p.file != nullptr; });
        const Piece& last = *std::prev(end);
        if (std::next(piece) == end && piece->bytes != nullptr) {
            to.write_at(offset + piece->begin,
                        {piece->bytes, static_cast<std::size_t>(piece->size)});
        } else {
            copy_bytes(content, piece->begin, to, offset + piece->begin,
                       last.begin + last.size - piece->begin, host);
        }
        piece = end;
    }
}

std::vector<std::uint8_t> FileContent::read(const ByteRange& range) const {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(range.length()));
    if (ContentFile(*this).read_at(range.begin, bytes) < bytes.size()) {
        throw Error(RuntimeError::InputPastEnd);
    }
    return bytes;
}

NewContent FileContent::around_last_range_of(const BinaryFile& file) const {
    NewContent content;
    const auto last = std::find_if(pieces_.rbegin(), pieces_.rend(),
                                   [&](const Piece& piece) { return piece.file == &file; });
    if (last == pieces_.rend()) {
        content.front = read_all();
        return content;
    }
    content.front = read({0, last->begin});
    content.kept_from = last->offset;
    content.kept_to = last->offset + last->size;
    content.back = read({last->begin + last->size, size_});
    return content;
}

std::vector<FileContent::Part> FileContent::parts_apart_from(const BinaryFile& file,
                                                             std::int64_t offset) const {
    std::vector<Part> parts;
    for (const Piece& piece : pieces_) {
        if (piece.file != &file || piece.offset != offset + piece.begin) {
            parts.push_back({{piece.begin, piece.begin + piece.size}, piece.file == &file});
        }
    }
    return parts;
}

FileState ContentFile::state() {
    return {.length = content_.size()};
}

std::size_t ContentFile::read_at(std::int64_t offset, std::span<std::uint8_t> into) {
    std::size_t done = 0;
    for (auto next = content_.piece_at(offset);
         next != content_.pieces_.end() && done < into.size(); ++next) {
        const FileContent::Piece& piece = *next;
        const std::int64_t skipped = offset + static_cast<std::int64_t>(done) - piece.begin;
        if (skipped < 0 || skipped >= piece.size) {
            break;
        }
        const auto count = static_cast<std::size_t>(std::min<std::int64_t>(
            piece.size - skipped, static_cast<std::int64_t>(into.size() - done)));
        const std::size_t read = read_piece(piece, skipped, into.subspan(done, count));
        done += read;
        if (read < count) {
            break;  // another program has cut the file
        }
    }
    return done;
}

std::size_t ContentFile::read_piece(const FileContent::Piece& piece, std::int64_t offset,
                                    std::span<std::uint8_t> into) {
    if (piece.bytes != nullptr) {
        std::memcpy(into.data(), piece.bytes + offset, into.size());
        return into.size();
    }
    if (piece.file != nullptr) {
        return piece.file->read_at(piece.offset + offset, into);
    }
    if (piece.source) {
        return read_source(piece, piece.offset + offset, into);
    }
    std::fill(into.begin(), into.end(), std::uint8_t{0});
    return into.size();
}

std::size_t ContentFile::read_source(const FileContent::Piece& piece, std::int64_t offset,
                                     std::span<std::uint8_t> into) {
    if (piece.source.get() != open_source_ || offset < stream_offset_) {
        stream_ = piece.source->open();
        open_source_ = piece.source.get();
        stream_offset_ = 0;
    }
    std::vector<std::uint8_t> skipped(static_cast<std::size_t>(
        std::min<std::int64_t>(offset - stream_offset_, static_cast<std::int64_t>(kBlock))));
    while (stream_offset_ < offset) {
        const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(
            offset - stream_offset_, static_cast<std::int64_t>(skipped.size())));
        const std::size_t read = stream_->read(std::span(skipped).first(wanted));
        if (read == 0) {
            return 0;
        }
        stream_offset_ += static_cast<std::int64_t>(read);
    }
    const std::size_t read = stream_->read(into);
    stream_offset_ += static_cast<std::int64_t>(read);
    return read;
}

}  // namespace brindle
