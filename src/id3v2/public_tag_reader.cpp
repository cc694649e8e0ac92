#include "id3v2/public_tag_reader.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>

#include "id3v2/tag_layout.h"
#include "mpeg/frame_header.h"
#include "util/find_byte.h"

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
    {version3_flags::kCompressed, 4, true, false},
    {version3_flags::kEncrypted, 1, true, false},
    {version3_flags::kGrouped, 1, false, false},
};
constexpr FrameFlag kVersion4Flags[] = {
    {version4_flags::kGrouped, 1, false, false},
    {version4_flags::kCompressed, 0, true, false},
    {version4_flags::kEncrypted, 1, true, false},
    {version4_flags::kUnsynchronised, 0, false, true},
    {version4_flags::kHasLength, 4, false, false},
};

bool is_id_character(std::uint8_t byte) noexcept {
    return (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
}

// Some programs leave three letters and a NUL or a blank when they convert a version 2 tag.
bool is_frame_id(std::span<const std::uint8_t> id) noexcept {
    const bool is_padded = id.size() == 4 && (id[3] == 0 || id[3] == ' ');
    const auto characters = is_padded ? id.first(3) : id;
    return std::all_of(characters.begin(), characters.end(), is_id_character);
}

// Steps over the extended header: its size leaves itself out in version 3, and is of 7 bits a byte
// and counts itself in version 4. A frame's id where it should be means that the flag is wrong.
void skip_extended_header(std::uint8_t version, PublicByteReader& bytes) {
    std::array<std::uint8_t, kTagSizeWidth> size{};
    PublicByteReader ahead = bytes;
    if (ahead.read(size) < size.size() || is_frame_id(size)) {
        return;
    }
    const bool counts_itself = version == kNewestVersion;
    bytes.skip(counts_itself ? 0 : static_cast<std::int64_t>(size.size()));
    bytes.skip(static_cast<std::int64_t>(
        decode_number(size, counts_itself ? kSyncsafeShift : kPlainShift)));
}

void apply_flags(std::uint8_t flags, std::span<const FrameFlag> known, PublicFrame& frame) {
    for (const FrameFlag& flag : known) {
        if ((flags & flag.mask) != 0) {
            frame.prefix = static_cast<std::uint8_t>(frame.prefix + flag.prefix);
            frame.is_packed = frame.is_packed || flag.packed;
            frame.is_unsynchronised = frame.is_unsynchronised || flag.unsynchronised;
        }
    }
}

bool are_zeros(std::span<const std::uint8_t> bytes) noexcept {
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

// A frame of any id as this library writes it: with a body and without flags. What follows a
// tag is not taken for one: of a frame of silence the bytes after its header are zeros.
bool may_be_frame(std::span<const std::uint8_t> header, const FrameLayout& layout) noexcept {
    const auto size = header.subspan(layout.id_width, layout.size_width);
    const auto flags = header.subspan(layout.id_width + layout.size_width);
    return !are_zeros(size) && !flags.empty() && are_zeros(flags);
}

bool has_top_bit(std::span<const std::uint8_t> bytes) noexcept {
    constexpr std::uint8_t kTopBit = 0x80;
    return std::any_of(bytes.begin(), bytes.end(),
                       [](std::uint8_t byte) { return (byte & kTopBit) != 0; });
}

struct Walk {
    std::vector<PublicFrame> frames;
    std::size_t whole_frames = 0;
    bool ended_well = false;
    std::int64_t end = 0;  // of the last frame
};

Walk walk_frames_of(FileWindow& file, const PublicTagHeader& header, FrameSizes sizes) {
    Walk walk;
    PublicFrameReader reader(file, header, sizes);
    while (const std::optional<PublicFrame> frame = reader.next()) {
        walk.frames.push_back(*frame);
        walk.whole_frames += frame->is_whole ? 1 : 0;
    }
    walk.ended_well = reader.ended_well();
    walk.end = reader.position();
    return walk;
}

// A tag that makes sense only with plain sizes, or more of it, is read so.
Walk walk_version4(FileWindow& file, const PublicTagHeader& header) {
    Walk syncsafe = walk_frames_of(file, header, FrameSizes::Syncsafe);
    if (syncsafe.ended_well) {
        return syncsafe;
    }
    Walk plain = walk_frames_of(file, header, FrameSizes::Plain);
    return plain.ended_well || plain.whole_frames > syncsafe.whole_frames ? std::move(plain)
                                                                          : std::move(syncsafe);
}

}  // namespace

// --- The bytes of a tag

void PublicByteReader::pass_inserted_zero(std::uint8_t byte) {
    if (unsynchronised_ && byte == kSyncByte && position_ < end_) {
        const auto next = file_->view(position_, 1);
        position_ += !next.empty() && next[0] == 0 ? 1 : 0;
    }
}

std::size_t PublicByteReader::read(std::span<std::uint8_t> into) {
    std::size_t count = 0;
    while (count < into.size() && !at_end()) {
        const auto left = static_cast<std::size_t>(std::min<std::int64_t>(
            end_ - position_, static_cast<std::int64_t>(into.size() - count)));
        auto bytes = file_->view(position_, left);
        if (bytes.empty()) {
            end_ = position_;
            break;
        }
        if (unsynchronised_) {
            bytes = bytes.first(std::min(find_byte(bytes, kSyncByte) + 1, bytes.size()));
        }
        std::copy(bytes.begin(), bytes.end(), into.begin() + static_cast<std::ptrdiff_t>(count));
        count += bytes.size();
        position_ += static_cast<std::int64_t>(bytes.size());
        pass_inserted_zero(bytes.back());
    }
    return count;
}

std::int64_t PublicByteReader::skip(std::int64_t count) {
    if (unsynchronised_) {
        return skip_unsynchronised(count);
    }
    const std::int64_t skipped = std::clamp<std::int64_t>(end_ - position_, 0, count);
    position_ += skipped;
    return skipped;
}

std::int64_t PublicByteReader::skip_unsynchronised(std::int64_t count) {
    std::int64_t skipped = 0;
    while (skipped < count && !at_end()) {
        auto bytes = file_->view_block(position_, 1);
        if (bytes.empty()) {
            end_ = position_;
            break;
        }
        const std::int64_t left = std::min(count - skipped, end_ - position_);
        if (std::cmp_greater(bytes.size(), left)) {
            bytes = bytes.first(static_cast<std::size_t>(left));
        }
        bytes = bytes.first(std::min(find_byte(bytes, kSyncByte) + 1, bytes.size()));
        const std::uint8_t last = bytes.back();
        skipped += static_cast<std::int64_t>(bytes.size());
        position_ += static_cast<std::int64_t>(bytes.size());
        pass_inserted_zero(last);
    }
    return skipped;
}

// --- The tag's header

std::int64_t PublicTagHeader::claimed_tag_end() const noexcept {
    return claimed_end + (has_footer ? static_cast<std::int64_t>(kTagHeaderSize) : 0);
}

bool PublicTagHeader::is_unsynchronised_as_a_whole() const noexcept {
    return (flags & kTagUnsynchronised) != 0 && version != kNewestVersion;
}

bool PublicTagHeader::is_compressed() const noexcept {
    return version == kOldestVersion && (flags & kTagCompressed) != 0;
}

std::optional<PublicTagHeader> read_public_tag_header(FileWindow& file, std::int64_t position) {
    const auto bytes = file.view(position, kTagHeaderSize);
    if (bytes.size() < kTagHeaderSize ||
        !std::equal(std::begin(kTagIdentifier), std::end(kTagIdentifier), bytes.begin()) ||
        !is_known_version(bytes[kVersionOffset])) {
        return std::nullopt;
    }
    constexpr std::size_t kFlagsOffset = 5;
    const auto size = bytes.subspan(kTagSizeOffset, kTagSizeWidth);
    PublicTagHeader header;
    header.version = bytes[kVersionOffset];
    header.flags = bytes[kFlagsOffset];
    header.has_plain_size_bits = has_top_bit(size);
    header.has_footer = header.version == kNewestVersion && (header.flags & kTagFooter) != 0;
    header.position = position;
    header.begin = position + static_cast<std::int64_t>(kTagHeaderSize);
    header.claimed_end =
        header.begin + static_cast<std::int64_t>(decode_number(size, kSyncsafeShift));
    header.end = std::min(header.claimed_end, file.length());
    return header;
}

// --- The tag's frames

PublicFrameReader::PublicFrameReader(FileWindow& file, const PublicTagHeader& header,
                                     FrameSizes sizes, FrameIds ids)
    : layout_(header.version == kOldestVersion ? kVersion2FrameLayout : kFrameLayout),
      header_(header),
      sizes_(sizes),
      ids_(ids),
      bytes_(file, header.begin, header.end, header.is_unsynchronised_as_a_whole()) {
    if (header.version != kOldestVersion && (header.flags & kTagExtendedHeader) != 0) {
        skip_extended_header(header.version, bytes_);
    }
    has_ended_ = bytes_.at_end();
    ended_well_ = has_ended_;
}

std::optional<PublicFrame> PublicFrameReader::next() {
    if (has_ended_) {
        return std::nullopt;
    }
    has_ended_ = true;
    std::array<std::uint8_t, kFrameLayout.header_size> buffer{};
    const auto bytes = std::span(buffer).first(layout_.header_size);
    PublicFrame frame;
    frame.position = bytes_.position();
    PublicByteReader ahead = bytes_;
    const std::size_t seen = ahead.read(bytes);
    const auto id = bytes.first(layout_.id_width);
    const auto size_bytes = bytes.subspan(layout_.id_width, layout_.size_width);
    if (ids_ == FrameIds::Documented ? id[0] == 0 : are_zeros(id)) {
        ended_well_ = true;
        return std::nullopt;
    }
    const bool is_id = is_frame_id(id) || (ids_ == FrameIds::Any && may_be_frame(bytes, layout_));
    if (seen < bytes.size() || !is_id ||
        (sizes_ == FrameSizes::Syncsafe && has_top_bit(size_bytes))) {
        return std::nullopt;
    }
    bytes_ = ahead;
    const auto claimed = static_cast<std::int64_t>(
        decode_number(size_bytes, sizes_ == FrameSizes::Plain ? kPlainShift : kSyncsafeShift));
    std::copy_n(id.begin(), std::min(id.size(), frame.id_bytes.size()), frame.id_bytes.begin());
    frame.id_width = static_cast<std::uint8_t>(layout_.id_width);
    frame.is_unsynchronised = (header_.flags & kTagUnsynchronised) != 0;
    if (header_.version != kOldestVersion) {
        std::copy(bytes.end() - 2, bytes.end(), frame.flags.begin());
    }
    if (header_.version == kNewestVersion) {
        apply_flags(bytes[kFrameFlagsOffset], kVersion4Flags, frame);
    } else if (header_.version != kOldestVersion) {
        apply_flags(bytes[kFrameFlagsOffset], kVersion3Flags, frame);
    }
    frame.body = bytes_.position();
    frame.size = bytes_.skip(claimed);
    frame.body_end = bytes_.position();
    frame.is_whole = frame.size == claimed;
    ended_well_ = frame.is_whole && bytes_.at_end();
    has_ended_ = !frame.is_whole || bytes_.at_end();
    return frame;
}

std::optional<PublicTag> read_public_tag(FileWindow& file, std::int64_t position,
                                         std::int64_t limit) {
    std::optional<PublicTagHeader> header = read_public_tag_header(file, position);
    if (!header) {
        return std::nullopt;
    }
    header->end = std::clamp(limit, header->begin, std::max(header->begin, header->end));
    PublicTag tag;
    tag.version = header->version;
    tag.end = std::min(header->claimed_tag_end(),
                       header->end + (header->has_footer ? std::int64_t{kTagHeaderSize} : 0));
    tag.rest = {header->begin, header->end};
    if (header->is_compressed()) {
        return tag;
    }
    Walk walk = header->version == kNewestVersion
                    ? walk_version4(file, *header)
                    : walk_frames_of(file, *header, FrameSizes::Plain);
    tag.frames = std::move(walk.frames);
    tag.rest.begin = walk.end;
    return tag;
}

std::vector<PublicTag> read_public_tags(FileWindow& file, const ByteRange& range) {
    std::vector<PublicTag> tags;
    std::int64_t position = range.begin;
    while (position < range.end) {
        std::optional<PublicTag> tag = read_public_tag(file, position, range.end);
        if (!tag) {
            break;
        }
        position = tag->end;
        tags.push_back(std::move(*tag));
    }
    return tags;
}

std::int64_t end_of_zeros(FileWindow& file, const ByteRange& range) {
    std::int64_t position = range.begin;
    while (position < range.end) {
        const auto block = file.view_block(position, 1);
        const auto other =
            std::find_if(block.begin(), block.end(), [](std::uint8_t byte) { return byte != 0; });
        position += other - block.begin();
        if (block.empty() || other != block.end()) {
            break;
        }
    }
    return std::min(position, range.end);
}

std::vector<std::uint8_t> read_content(FileWindow& file, const PublicFrame& frame,
                                       std::size_t most) {
    if (frame.is_packed) {
        return {};
    }
    PublicByteReader bytes(file, frame.body, frame.body_end, frame.is_unsynchronised);
    bytes.skip(frame.prefix);
    const std::int64_t left = std::max<std::int64_t>(frame.body_end - bytes.position(), 0);
    std::vector<std::uint8_t> content(
        static_cast<std::size_t>(std::min<std::uint64_t>(most, static_cast<std::uint64_t>(left))));
    content.resize(bytes.read(content));
    return content;
}

}  // namespace brindle
