// Frames of any version as frames of version 2.3.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "id3v2/public_tag_reader.h"
#include "util/binary_file.h"
#include "util/file_content.h"

namespace brindle {

// A frame of version 2.3 that is yet to be written.
struct ImportedFrame {
    std::array<char, 4> id_bytes{};
    std::array<std::uint8_t, 2> flags{};
    FileContent body;         // with what the flags put in front of the content
    std::int64_t prefix = 0;  // how many bytes those are
    // False: id, flags and body are those of the file, byte for byte.
    bool is_converted = false;
    // Compressed or encrypted, so it cannot be decoded here.
    bool is_packed = false;

    [[nodiscard]] std::string_view id() const noexcept {
        return {id_bytes.data(), id_bytes.size()};
    }
    // Of the content after its prefix, `count` bytes at most; empty when it is packed.
    [[nodiscard]] std::vector<std::uint8_t> head(std::size_t count) const;
};

// Bodies up to this size are taken into memory where they are not copied as they are.
inline constexpr std::size_t kMaxBodyInMemory = std::size_t{64} * 1024;

// The same frame of version 2.3; none where the documents have no such frame. The bytes that need
// not change stay in `file`, which must stay open.
//
// A frame of version 2.3 stays byte for byte as it is, but unsynchronisation of the whole tag is
// undone. Of version 2.4 the flags become those of 2.3, unsynchronisation is undone, and texts in
// UTF-8 or big-endian UTF-16 become UTF-16 with a byte order mark, also in the frames inside of
// chapters. Of version 2.2 the id becomes that of 2.3.
[[nodiscard]] std::optional<ImportedFrame> import_frame(BinaryFile& file, std::uint8_t version,
                                                        const PublicFrame& frame);

}  // namespace brindle
