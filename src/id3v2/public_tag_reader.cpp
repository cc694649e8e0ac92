#include "id3v2/public_tag_reader.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "id3v2/tag_layout.h"

namespace brindle {

namespace {

// Flags of the tag header.
constexpr std::uint8_t kTagUnsynchronised = 0x80;
constexpr std::uint8_t kTagCompressed = 0x40;      // version 2: such a tag is to be ignored
constexpr std::uint8_t kTagExtendedHeader = 0x40;  // versions 3 and 4
constexpr std::uint8_t kTagFooter = 0x10;          // version 4

constexpr std::size_t kFrameFlagsOffset = 9;  // the second of two bytes; the first is about editing

// What a flag of a frame means for its body.
struct FrameFlag {
    std::uint8_t mask;
    std::uint8_t prefix;
    bool packed;
    bool unsynchronised;
};
constexpr FrameFlag kVersion3Flags[] = {
    {0x80, 4, true, false},   // compressed; the length without compression
    {0x40, 1, true, false},   // encrypted; the method
    {0x20, 1, false, false},  // grouped; the group
};
constexpr FrameFlag kVersion4Flags[] = {
    {0x40, 1, false, false},  // grouped
    {0x08, 0, true, false},   // compressed
    {0x04, 1, true, false},   // encrypted
    {0x02, 0, false, true},   // unsynchronised
    {0x01, 4, false, false},  // the length of the content in front of it
};

constexpr std::uint8_t kSyncByte = 0xFF;

bool is_id_character(std::uint8_t byte) noexcept {
    return (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
}

// Some programs leave three letters and a NUL or a blank when they convert a version 2 tag.
bool is_frame_id(std::span<const std::uint8_t> id) noexcept {
    const bool is_padded = id.size() == 4 && (id[3] == 0 || id[3] == ' ');
    const auto characters = is_padded ? id.first(3) : id;
    return std::all_of(characters.begin(), characters.end(), is_id_character);
}

// Bytes of a file one after the other. Where they are unsynchronised, the 0 that was put behind
// each FF is left out; a position is always that of the next byte that counts.
class ByteReader {
public:
    ByteReader(FileWindow& file, std::int64_t begin, std::int64_t end, bool unsynchronised)
        : file_(file), position_(begin), end_(end), unsynchronised_(unsynchronised) {}

    [[nodiscard]] std::int64_t position() const noexcept { return position_; }
    [[nodiscard]] bool at_end() const noexcept { return position_ >= end_; }

    // None at the end.
    std::optional<std::uint8_t> next() {
        if (at_end()) {
            return std::nullopt;
        }
        const auto bytes = file_.view(position_, 2);
        if (bytes.empty()) {
            end_ = position_;
            return std::nullopt;
        }
        const std::uint8_t byte = bytes[0];
        ++position_;
        if (unsynchronised_ && byte == kSyncByte && bytes.size() > 1 && bytes[1] == 0 &&
            position_ < end_) {
            ++position_;
        }
        return byte;
    }

    // How many bytes of `into` could be filled.
    std::size_t read(std::span<std::uint8_t> into) {
        std::size_t count = 0;
        while (count < into.size()) {
            const std::optional<std::uint8_t> byte = next();
            if (!byte) {
                break;
            }
            into[count] = *byte;
            ++count;
        }
        return count;
    }

    // How many of `count` bytes there were.
    std::int64_t skip(std::int64_t count) {
        if (!unsynchronised_) {
            const std::int64_t skipped =
                std::min(count, std::max<std::int64_t>(end_ - position_, 0));
            position_ += skipped;
            return skipped;
        }
        std::int64_t skipped = 0;
        while (skipped < count && next()) {
            ++skipped;
        }
        return skipped;
    }

private:
    FileWindow& file_;
    std::int64_t position_;
    std::int64_t end_;
    bool unsynchronised_;
};

struct Header {
    std::uint8_t version = 0;
    std::uint8_t flags = 0;
    std::int64_t begin = 0;  // of what stands behind the tag header
    std::int64_t end = 0;    // of the frames and their padding
    bool has_footer = false;
};

std::optional<Header> read_tag_header(FileWindow& file, std::int64_t position) {
    const auto bytes = file.view(position, kTagHeaderSize);
    if (bytes.size() < kTagHeaderSize ||
        !std::equal(std::begin(kTagIdentifier), std::end(kTagIdentifier), bytes.begin()) ||
        !is_known_version(bytes[kVersionOffset])) {
        return std::nullopt;
    }
    constexpr std::size_t kFlagsOffset = 5;
    Header header;
    header.version = bytes[kVersionOffset];
    header.flags = bytes[kFlagsOffset];
    header.begin = position + static_cast<std::int64_t>(kTagHeaderSize);
    const std::uint64_t size =
        decode_number(bytes.subspan(kTagSizeOffset, kTagSizeWidth), kSyncsafeShift);
    header.end = std::min(header.begin + static_cast<std::int64_t>(size), file.length());
    header.has_footer = header.version == kNewestVersion && (header.flags & kTagFooter) != 0;
    return header;
}

// Steps over the extended header: its size leaves itself out in version 3, and is of 7 bits a byte
// and counts itself in version 4. A frame's id where it should be means that the flag is wrong.
void skip_extended_header(const Header& header, ByteReader& bytes) {
    std::array<std::uint8_t, kTagSizeWidth> size{};
    ByteReader ahead = bytes;
    if (ahead.read(size) < size.size() || is_frame_id(size)) {
        return;
    }
    const bool counts_itself = header.version == kNewestVersion;
    bytes.skip(counts_itself ? 0 : static_cast<std::int64_t>(size.size()));
    bytes.skip(static_cast<std::int64_t>(
        decode_number(size, counts_itself ? kSyncsafeShift : kPlainShift)));
}

enum class FrameSizes { Plain, Syncsafe };

struct Walk {
    std::vector<PublicFrame> frames;
    std::size_t whole_frames = 0;
    bool ended_well = false;  // with padding or exactly where the tag ends
};

void apply_flags(std::uint8_t flags, std::span<const FrameFlag> known, PublicFrame& frame) {
    for (const FrameFlag& flag : known) {
        if ((flags & flag.mask) != 0) {
            frame.prefix = static_cast<std::uint8_t>(frame.prefix + flag.prefix);
            frame.is_packed = frame.is_packed || flag.packed;
            frame.is_unsynchronised = frame.is_unsynchronised || flag.unsynchronised;
        }
    }
}

class FrameWalk {
public:
    FrameWalk(FileWindow& file, const Header& header, FrameSizes sizes)
        : layout_(header.version == kOldestVersion ? kVersion2FrameLayout : kFrameLayout),
          header_(header),
          sizes_(sizes),
          // From version 4 on each frame is unsynchronised by itself, and sizes count what stands
          // in the file.
          bytes_(file, header.begin, header.end,
                 is_unsynchronised() && header.version != kNewestVersion) {
        if (header.version != kOldestVersion && (header.flags & kTagExtendedHeader) != 0) {
            skip_extended_header(header, bytes_);
        }
    }

    Walk run() {
        while (read_frame()) {
        }
        return std::move(walk_);
    }

private:
    [[nodiscard]] bool is_unsynchronised() const noexcept {
        return (header_.flags & kTagUnsynchronised) != 0;
    }

    // False when it was the last one or none.
    bool read_frame() {
        std::array<std::uint8_t, kFrameLayout.header_size> buffer{};
        const auto bytes = std::span(buffer).first(layout_.header_size);
        PublicFrame frame;
        frame.position = bytes_.position();
        const std::size_t seen = bytes_.read(bytes);
        if (bytes[0] == 0) {
            walk_.ended_well = true;
            return false;
        }
        const auto id = bytes.first(layout_.id_width);
        const auto size_bytes = bytes.subspan(layout_.id_width, layout_.size_width);
        const bool is_size = sizes_ == FrameSizes::Plain ||
                             std::all_of(size_bytes.begin(), size_bytes.end(),
                                         [](std::uint8_t byte) { return byte < 0x80; });
        if (seen < bytes.size() || !is_frame_id(id) || !is_size) {
            return false;
        }
        const auto claimed = static_cast<std::int64_t>(
            decode_number(size_bytes, sizes_ == FrameSizes::Plain ? kPlainShift : kSyncsafeShift));
        std::copy_n(id.begin(), std::min(id.size(), frame.id_bytes.size()), frame.id_bytes.begin());
        frame.id_width = static_cast<std::uint8_t>(layout_.id_width);
        frame.is_unsynchronised = is_unsynchronised();
        if (header_.version == kNewestVersion) {
            apply_flags(bytes[kFrameFlagsOffset], kVersion4Flags, frame);
        } else if (header_.version != kOldestVersion) {
            apply_flags(bytes[kFrameFlagsOffset], kVersion3Flags, frame);
        }
        frame.body = bytes_.position();
        frame.size = bytes_.skip(claimed);
        frame.body_end = bytes_.position();
        if (frame.size > 0) {
            walk_.frames.push_back(frame);
        }
        const bool is_whole = frame.size == claimed;
        walk_.whole_frames += is_whole ? 1 : 0;
        walk_.ended_well = is_whole && bytes_.at_end();
        return is_whole && !bytes_.at_end();
    }

    FrameLayout layout_;
    const Header& header_;
    FrameSizes sizes_;
    ByteReader bytes_;
    Walk walk_;
};

// Version 4 wants sizes of 7 bits a byte, and programs that never learned it write plain ones. A
// tag that makes sense only so, or more of it, is read so.
Walk walk_version4(FileWindow& file, const Header& header) {
    Walk syncsafe = FrameWalk(file, header, FrameSizes::Syncsafe).run();
    if (syncsafe.ended_well) {
        return syncsafe;
    }
    Walk plain = FrameWalk(file, header, FrameSizes::Plain).run();
    return plain.ended_well || plain.whole_frames > syncsafe.whole_frames ? std::move(plain)
                                                                          : std::move(syncsafe);
}

}  // namespace

std::optional<PublicTag> read_public_tag(FileWindow& file, std::int64_t position) {
    const std::optional<Header> header = read_tag_header(file, position);
    if (!header) {
        return std::nullopt;
    }
    PublicTag tag;
    tag.version = header->version;
    tag.end = header->end + (header->has_footer ? static_cast<std::int64_t>(kTagHeaderSize) : 0);
    if (header->version == kOldestVersion && (header->flags & kTagCompressed) != 0) {
        return tag;
    }
    tag.frames = header->version == kNewestVersion
                     ? walk_version4(file, *header).frames
                     : FrameWalk(file, *header, FrameSizes::Plain).run().frames;
    return tag;
}

std::vector<std::uint8_t> read_content(FileWindow& file, const PublicFrame& frame,
                                       std::size_t most) {
    if (frame.is_packed) {
        return {};
    }
    ByteReader bytes(file, frame.body, frame.body_end, frame.is_unsynchronised);
    bytes.skip(frame.prefix);
    const std::int64_t left = std::max<std::int64_t>(frame.body_end - bytes.position(), 0);
    std::vector<std::uint8_t> content(
        static_cast<std::size_t>(std::min<std::uint64_t>(most, static_cast<std::uint64_t>(left))));
    content.resize(bytes.read(content));
    return content;
}

}  // namespace brindle
