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
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "id3v2/tag_layout.h"
#include "util/byte_range.h"
#include "util/file_window.h"

namespace brindle {

struct PublicFrame {
    std::array<char, 4> id_bytes{};
    std::uint8_t id_width = 4;  // 3 in version 2
    // Not its content as it is: another form has to be undone first.
    bool is_packed = false;  // compressed or encrypted, which can't be undone here
    bool is_unsynchronised = false;
    bool is_whole = true;  // false: the tag ends before it does
    std::array<std::uint8_t, 2> flags{};
    std::uint8_t prefix = 0;    // bytes that flags put in front of the content
    std::int64_t position = 0;  // of the header
    std::int64_t body = 0;      // from here ...
    std::int64_t body_end = 0;  // ... to here in the file
    std::int64_t size = 0;      // as its header says, but no more than the tag holds

    [[nodiscard]] std::string_view id() const noexcept { return {id_bytes.data(), id_width}; }
};

// The bytes before the frames.
struct PublicTagHeader {
    std::uint8_t version = 0;
    std::uint8_t flags = 0;
    bool has_plain_size_bits = false;  // a top bit of the size is set, which no writer may do
    bool has_footer = false;
    std::int64_t position = 0;
    std::int64_t begin = 0;        // of what follows the tag header
    std::int64_t claimed_end = 0;  // of frames and padding, by the size
    std::int64_t end = 0;          // the same, no farther than the file

    // After the last byte, footer included.
    [[nodiscard]] std::int64_t claimed_tag_end() const noexcept;
    // All frames are undone together; from version 4 on each by itself.
    [[nodiscard]] bool is_unsynchronised_as_a_whole() const noexcept;
    // A form that the documents no longer describe.
    [[nodiscard]] bool is_compressed() const noexcept;
};

// None if there is no tag header of a known version.
[[nodiscard]] std::optional<PublicTagHeader> read_public_tag_header(FileWindow& file,
                                                                    std::int64_t position);

// Version 4 requires frame sizes of 7 bits per byte, but many programs write plain
// ones.
enum class FrameSizes { Plain, Syncsafe };

// Ids are capital letters and digits. This library has written others, too: those that it took for
// ids when it read a tag that was damaged.
enum class FrameIds { Documented, Any };

// Bytes of a file one after the other. Where they are unsynchronised, the 0 that was put after each
// FF is left out; a position is always that of the next byte that counts.
class PublicByteReader {
public:
    PublicByteReader(FileWindow& file, std::int64_t begin, std::int64_t end, bool unsynchronised)
        : file_(&file), position_(begin), end_(end), unsynchronised_(unsynchronised) {}

    [[nodiscard]] std::int64_t position() const noexcept { return position_; }
    [[nodiscard]] bool at_end() const noexcept { return position_ >= end_; }
    // How many bytes of `into` could be filled.
    std::size_t read(std::span<std::uint8_t> into);
    // How many of `count` bytes there were.
    std::int64_t skip(std::int64_t count);

private:
    std::int64_t skip_unsynchronised(std::int64_t count);
    void pass_inserted_zero(std::uint8_t byte);

    FileWindow* file_;  // never null
    std::int64_t position_;
    std::int64_t end_;
    bool unsynchronised_;
};

// The frames of one tag, one after the other. Bodies are stepped over, not read.
class PublicFrameReader {
public:
    PublicFrameReader(FileWindow& file, const PublicTagHeader& header, FrameSizes sizes,
                      FrameIds ids = FrameIds::Documented);

    // None after the last one. A frame that claims more than the tag holds is the last one. Frames
    // without a body are included.
    std::optional<PublicFrame> next();
    // Whether the last frame was followed by padding or ended exactly where the tag does.
    [[nodiscard]] bool ended_well() const noexcept { return ended_well_; }
    // Where padding begins, or the tag ends.
    [[nodiscard]] std::int64_t position() const noexcept { return bytes_.position(); }

private:
    FrameLayout layout_;
    PublicTagHeader header_;
    FrameSizes sizes_;
    FrameIds ids_;
    PublicByteReader bytes_;
    bool has_ended_ = false;
    bool ended_well_ = false;
};

struct PublicTag {
    std::uint8_t version = 0;
    std::int64_t end = 0;  // after its last byte, footer included
    std::vector<PublicFrame> frames;
    // The bytes between the last frame and the end, mostly padding.
    ByteRange rest;
};

// The tag whose "ID3" is at `position`, as far as it lies before `limit`; none when there is no
// tag header.
[[nodiscard]] std::optional<PublicTag> read_public_tag(
    FileWindow& file, std::int64_t position,
    std::int64_t limit = std::numeric_limits<std::int64_t>::max());

// The consecutive tags in the range.
[[nodiscard]] std::vector<PublicTag> read_public_tags(FileWindow& file, const ByteRange& range);

// Position of the first byte other than 0; the range's end, or the file's before it, without one.
[[nodiscard]] std::int64_t end_of_zeros(FileWindow& file, const ByteRange& range);

// What the frame holds when prefix and unsynchronisation are undone, up to `most` bytes of it.
// Empty for a packed one.
[[nodiscard]] std::vector<std::uint8_t> read_content(FileWindow& file, const PublicFrame& frame,
                                                     std::size_t most);

}  // namespace brindle
