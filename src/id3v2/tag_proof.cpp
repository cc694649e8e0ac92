#include "id3v2/tag_proof.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "id3v2/documented_ids.h"
#include "id3v2/public_tag_reader.h"
#include "id3v2/tag_layout.h"
#include "mpeg/audio_start.h"

namespace brindle {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr auto kTagHeader = static_cast<std::int64_t>(kTagHeaderSize);

bool stands_at(FileWindow& file, std::int64_t position, std::string_view text) {
    const Bytes bytes = file.view(position, text.size());
    return bytes.size() == text.size() && std::equal(bytes.begin(), bytes.end(), text.begin());
}

// --- A tag that ends where it claims to

bool frames_end_exactly(FileWindow& file, const PublicTagHeader& header, FrameSizes sizes) {
    PublicFrameReader frames(file, header, sizes, FrameIds::Any);
    while (frames.next()) {
    }
    return frames.ended_well() &&
           end_of_zeros(file, {frames.position(), header.claimed_end}) == header.claimed_end;
}

// Frames and padding fill the tag to its last byte.
bool is_filled(FileWindow& file, const PublicTagHeader& header) {
    file.expect_until(header.claimed_tag_end() + static_cast<std::int64_t>(kHeaderBytes));
    constexpr std::string_view kFooterIdentifier = "3DI";
    if (header.has_plain_size_bits || header.is_compressed() ||
        header.claimed_tag_end() > file.length() ||
        (header.has_footer && !stands_at(file, header.claimed_end, kFooterIdentifier))) {
        return false;
    }
    return (header.version == kNewestVersion &&
            frames_end_exactly(file, header, FrameSizes::Syncsafe)) ||
           frames_end_exactly(file, header, FrameSizes::Plain);
}

// --- Frames that other frames follow

bool is_strict_id(Bytes id) {
    if (id.size() == kVersion2FrameLayout.id_width) {
        // A header of three letters and a size is soon met by chance; of these ids none is.
        return is_version2_id(std::string(id.begin(), id.end()));
    }
    return std::all_of(id.begin(), id.end(), [](std::uint8_t byte) {
        return (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
    });
}

bool has_undefined_flags(std::uint8_t version, Bytes flags) {
    struct DefinedFlags {
        std::uint8_t status;
        std::uint8_t format;
    };
    constexpr DefinedFlags kVersion3{0xE0, 0xE0};
    constexpr DefinedFlags kVersion4{0x70, 0x4F};
    const DefinedFlags defined = version == kNewestVersion ? kVersion4 : kVersion3;
    return (flags[0] & ~defined.status) != 0 || (flags[1] & ~defined.format) != 0;
}

// Walks over frames without believing the size of the tag that they stand in.
class FollowedFrames {
public:
    FollowedFrames(FileWindow& file, const PublicTagHeader& header)
        : file_(file),
          header_(header),
          layout_(header.version == kOldestVersion ? kVersion2FrameLayout : kFrameLayout) {}

    // After the last frame that another one follows; `position` where there is none.
    std::int64_t end_from(std::int64_t position) {
        while (const std::optional<std::int64_t> next = follower_of(position)) {
            position = *next;
        }
        return position;
    }

private:
    // Reads a frame's header; none unless it is one beyond doubt.
    [[nodiscard]] std::optional<PublicByteReader> body_at(std::int64_t position,
                                                          std::span<std::uint8_t> header_bytes) {
        PublicByteReader reader(file_, position, file_.length(),
                                header_.is_unsynchronised_as_a_whole());
        const bool is_whole = reader.read(header_bytes) == header_bytes.size();
        const Bytes bytes = header_bytes;
        const bool has_flags = layout_.id_width != kVersion2FrameLayout.id_width;
        if (!is_whole || !is_strict_id(bytes.first(layout_.id_width)) ||
            (has_flags && has_undefined_flags(header_.version, bytes.last(2)))) {
            return std::nullopt;
        }
        return reader;
    }

    // Where a frame at `position` ends, by one way of writing its size.
    [[nodiscard]] std::optional<std::int64_t> frame_end(std::int64_t position, int shift) {
        std::array<std::uint8_t, kFrameLayout.header_size> buffer{};
        const auto bytes = std::span(buffer).first(layout_.header_size);
        std::optional<PublicByteReader> body = body_at(position, bytes);
        const auto size = static_cast<std::int64_t>(
            decode_number(bytes.subspan(layout_.id_width, layout_.size_width), shift));
        if (!body || size < 1 || body->skip(size) < size) {
            return std::nullopt;
        }
        return body->position();
    }

    // Whether a frame stands there that fits into the file.
    [[nodiscard]] bool is_frame(std::int64_t position) {
        return frame_end(position, kPlainShift) ||
               (header_.version == kNewestVersion && frame_end(position, kSyncsafeShift));
    }

    [[nodiscard]] std::optional<std::int64_t> follower_of(std::int64_t position) {
        if (header_.version == kNewestVersion) {
            const auto next = frame_end(position, kSyncsafeShift);
            if (next && is_frame(*next)) {
                return next;
            }
        }
        const auto next = frame_end(position, kPlainShift);
        return next && is_frame(*next) ? next : std::nullopt;
    }

    FileWindow& file_;
    const PublicTagHeader& header_;
    FrameLayout layout_;
};

std::int64_t end_of_followed_frames(FileWindow& file, const PublicTagHeader& header) {
    FollowedFrames frames(file, header);
    const std::int64_t end = frames.end_from(header.begin);
    if (end != header.begin || header.is_compressed()) {
        return end;
    }
    // An extended header may stand in front of them.
    PublicTagHeader unbounded = header;
    unbounded.end = file.length();
    const std::int64_t first = PublicFrameReader(file, unbounded, FrameSizes::Plain).position();
    const std::int64_t extended_end = frames.end_from(first);
    return extended_end != first ? extended_end : header.begin;
}

// --- What follows a tag

bool is_followed_by_known(FileWindow& file, std::int64_t begin, std::int64_t end,
                          std::optional<std::int64_t> stream) {
    constexpr std::string_view kRecordIdentifier = "TAG";
    constexpr std::string_view kApeIdentifier = "APETAGEX";
    const bool is_audio = is_any_header_at(file, end);
    const bool is_known = is_audio || end == file.length() ||
                          stands_at(file, end, kRecordIdentifier) ||
                          stands_at(file, end, kApeIdentifier);
    const bool would_hold_stream = !is_audio && stream && *stream >= begin && *stream < end;
    return is_known && !would_hold_stream && !frame_ends_at(file, begin, end);
}

}  // namespace

ProvenTag prove_tag(FileWindow& file, std::int64_t position, std::optional<std::int64_t> stream) {
    const std::optional<PublicTagHeader> first = read_public_tag_header(file, position);
    if (!first) {
        return {position, false};
    }
    std::int64_t end = position;
    for (auto header = first; header; header = read_public_tag_header(file, end)) {
        if (!is_filled(file, *header)) {
            end = position;
            break;
        }
        end = header->claimed_tag_end();
    }
    if (end != position && is_followed_by_known(file, position + kTagHeader, end, stream)) {
        return {end, true};
    }
    return {end_of_followed_frames(file, *first), false};
}

}  // namespace brindle
