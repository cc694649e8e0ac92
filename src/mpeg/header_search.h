// Headers of frames in a file and in memory: what is at a position, and where the next header is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "mpeg/frame_header.h"
#include "util/byte_range.h"
#include "util/file_window.h"
#include "util/find_byte.h"

namespace brindle {

// The four bytes at a position; 0, which is no header, where the file ends.
[[nodiscard]] inline std::uint32_t header_bits_at(FileWindow& file, std::int64_t position) {
    const auto bytes = file.view(position, kHeaderBytes);
    return bytes.size() < kHeaderBytes ? 0 : header_bits(bytes.data());
}

// The header at a position, when its frame ends at `end` or before.
[[nodiscard]] inline std::optional<FrameHeader> frame_at(FileWindow& file, std::int64_t position,
                                                         std::int64_t end) {
    const auto header = parse_frame_header(header_bits_at(file, position));
    return header && position + header->length <= end ? header : std::nullopt;
}

// The first offset from `begin` on, and before `end`, where a header may begin and
// `accepts(offset)` holds. Four bytes can be read there: `end` is at most the last place of which
// that is true, and one.
template <typename Accepts>
[[nodiscard]] std::optional<std::size_t> find_header(std::span<const std::uint8_t> bytes,
                                                     std::size_t begin, std::size_t end,
                                                     const Accepts& accepts) {
    for (std::size_t offset = begin; offset < end; ++offset) {
        offset += find_byte(bytes.subspan(offset, end - offset), kSyncByte);
        if (offset < end && accepts(offset)) {
            return offset;
        }
    }
    return std::nullopt;
}

// The same over all of them.
template <typename Accepts>
[[nodiscard]] std::optional<std::size_t> find_header(std::span<const std::uint8_t> bytes,
                                                     const Accepts& accepts) {
    return bytes.size() < kHeaderBytes
               ? std::nullopt
               : find_header(bytes, 0, bytes.size() - kHeaderBytes + 1, accepts);
}

// The same for the positions of a file. The window moves on to where the search ends.
template <typename Accepts>
[[nodiscard]] std::optional<std::int64_t> find_header(FileWindow& file, const ByteRange& range,
                                                      const Accepts& accepts) {
    for (std::int64_t position = range.begin; position < range.end; ++position) {
        file.keep_from(position);
        const auto block = file.view_block(position, kHeaderBytes);
        if (block.size() < kHeaderBytes) {
            break;
        }
        const std::size_t sync = find_byte(block, kSyncByte);
        position += static_cast<std::int64_t>(sync);
        if (sync == block.size()) {
            --position;  // the next round begins after the block
        } else if (position < range.end && accepts(position)) {
            return position;
        }
    }
    return std::nullopt;
}

}  // namespace brindle
