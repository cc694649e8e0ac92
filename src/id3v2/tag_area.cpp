#include "id3v2/tag_area.h"

#include <algorithm>
#include <array>
#include <span>

#include "id3v2/audio_start.h"
#include "id3v2/tag_layout.h"
#include "id3v2/tag_search.h"

namespace brindle {

namespace {

constexpr std::int64_t kHeader = kTagHeaderSize;

// A size that the file can't hold says nothing; the tag's header is all that is known of it.
std::int64_t believed_length(const OldTag& tag, std::int64_t file_length) noexcept {
    return tag.length - kHeader > file_length ? kHeader : tag.length;
}

}  // namespace

std::optional<OldTag> find_old_tag(FileWindow& file) {
    const std::optional<std::int32_t> position = find_tag(file);
    if (!position) {
        return std::nullopt;
    }
    std::array<std::uint8_t, kTagHeaderSize> header{};
    const auto seen = file.view(*position, header.size());
    std::copy(seen.begin(), seen.end(), header.begin());
    const std::uint64_t size =
        decode_number(std::span(header).subspan(kTagSizeOffset, kTagSizeWidth), kSyncsafeShift);
    return OldTag{*position, static_cast<std::int64_t>(size) + kHeader};
}

TagArea find_tag_area(FileWindow& file, std::optional<std::int64_t> accepted) {
    const std::optional<OldTag> tag = find_old_tag(file);
    ClaimedArea claimed;
    if (tag) {
        claimed = {tag->position, tag->position + believed_length(*tag, file.length())};
    }
    TagArea area;
    area.audio = find_audio_start(file, accepted, claimed);
    if (!tag || (area.audio && tag->position >= *area.audio)) {
        // No tag, or one inside the audio, which is audio too.
        area.kept_from = area.audio.value_or(0);
        return area;
    }
    area.position = tag->position;
    const std::int64_t end = area.audio.value_or(claimed.end);
    area.length = end - tag->position;
    // Without audio nobody knows what stands before such a tag, so all of it is kept.
    area.kept_from = area.audio || tag->position == 0 ? end : 0;
    return area;
}

std::optional<Stretch> find_strippable(FileWindow& file, std::optional<std::int64_t> accepted) {
    const std::optional<OldTag> tag = find_old_tag(file);
    if (!tag) {
        return Stretch();
    }
    if (const auto audio = find_tag_area(file, accepted).audio) {
        return Stretch{0, *audio};
    }
    const Stretch claimed{tag->position, tag->position + tag->length};
    return claimed.end > file.length() ? std::nullopt : std::optional(claimed);
}

std::int64_t roomy_area(std::int64_t needed) noexcept {
    constexpr std::int64_t kStep = 2048;
    return (needed / kStep + 1) * kStep;
}

}  // namespace brindle
