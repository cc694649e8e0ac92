// A second reader of ID3v2 tags, by the public documents "ID3 tag version 2" (2.2), "ID3 tag
// version 2.3.0" and "ID3 tag version 2.4.0".
//
// TagReader reads as the hosts of this library always have; what it does not see, or sees in
// another way than the documents say, other programs do see. This reader tells what they find, so
// that a save can be judged before it happens. It answers no property.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "util/file_window.h"

namespace brindle {

struct PublicFrame {
    std::array<char, 4> id_bytes{};
    std::uint8_t id_width = 4;  // 3 in version 2
    // Not its content as it is: another form has to be undone first.
    bool is_packed = false;  // compressed or encrypted, which can't be undone here
    bool is_unsynchronised = false;
    std::uint8_t prefix = 0;    // bytes that flags put in front of the content
    std::int64_t position = 0;  // of the header
    std::int64_t body = 0;      // from here ...
    std::int64_t body_end = 0;  // ... to here in the file
    std::int64_t size = 0;      // as its header says, but no more than the tag holds

    [[nodiscard]] std::string_view id() const noexcept { return {id_bytes.data(), id_width}; }
};

struct PublicTag {
    std::uint8_t version = 0;
    std::int64_t end = 0;  // behind its last byte, footer included
    std::vector<PublicFrame> frames;
};

// The tag whose "ID3" stands at `position`; none when there is no tag header. Bodies are stepped
// over, not read.
[[nodiscard]] std::optional<PublicTag> read_public_tag(FileWindow& file, std::int64_t position);

// What the frame holds when prefix and unsynchronisation are undone, up to `most` bytes of it.
// Empty for a packed one.
[[nodiscard]] std::vector<std::uint8_t> read_content(FileWindow& file, const PublicFrame& frame,
                                                     std::size_t most);

}  // namespace brindle
