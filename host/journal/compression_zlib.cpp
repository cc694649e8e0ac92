#include <algorithm>
#include <new>
#include <zlib.h>

#include "journal/compression.h"

namespace brindle::host {

JournalBytes compressed(std::span<const std::uint8_t> bytes) {
    uLongf size = compressBound(static_cast<uLong>(bytes.size()));
    JournalBytes result(size);
    if (compress2(result.data(), &size, bytes.data(), static_cast<uLong>(bytes.size()),
                  Z_BEST_SPEED) != Z_OK) {
        throw std::bad_alloc();  // the only possible failure
    }
    result.resize(size);
    return result;
}

std::optional<JournalBytes> decompressed(std::span<const std::uint8_t> bytes, std::size_t length) {
    constexpr std::size_t kBlock = std::size_t{256} * 1024;
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) {
        throw std::bad_alloc();
    }
    // zlib does not change the bytes, but its member is not a pointer to const.
    stream.next_in = const_cast<Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    JournalBytes result;
    int state = Z_OK;
    try {
        // One byte more than allowed, to detect excess data.
        while (state == Z_OK && result.size() <= length) {
            const std::size_t before = result.size();
            const std::size_t room = std::min(kBlock, length + 1 - before);
            result.resize(before + room);
            stream.next_out = result.data() + before;
            stream.avail_out = static_cast<uInt>(room);
            state = inflate(&stream, Z_NO_FLUSH);
            result.resize(before + room - stream.avail_out);
        }
    } catch (...) {
        inflateEnd(&stream);
        throw;
    }
    const bool is_whole = state == Z_STREAM_END && stream.avail_in == 0 && result.size() == length;
    inflateEnd(&stream);
    return is_whole ? std::optional(std::move(result)) : std::nullopt;
}

}  // namespace brindle::host
