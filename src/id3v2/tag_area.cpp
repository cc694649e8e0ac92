#include "id3v2/tag_area.h"

#include "id3v2/public_tag_reader.h"
#include "id3v2/tag_layout.h"
#include "id3v2/tag_proof.h"
#include "id3v2/tag_search.h"

namespace brindle {

namespace {

constexpr std::int64_t kHeader = kTagHeaderSize;

// Where a tag in a file without audio ends: its size is all that is known. One that the file cannot
// hold says nothing.
std::int64_t believed_end(FileWindow& file, std::int64_t position, std::int64_t claimed_end) {
    return claimed_end - position - kHeader <= file.length() ? claimed_end : position + kHeader;
}

std::optional<StreamKinds> kinds_of(const std::optional<AcceptedFrame>& accepted) {
    return accepted ? std::optional(accepted->kinds) : std::nullopt;
}

// Audio from `begin` on; the accepted frame itself where nothing comes before it.
std::optional<std::int64_t> audio_from(FileWindow& file, std::int64_t begin,
                                       const std::optional<AcceptedFrame>& accepted) {
    const bool ends_at_accepted = accepted && accepted->position >= begin;
    const std::int64_t end = ends_at_accepted ? accepted->position + 1 : file.length();
    file.expect_until(end + static_cast<std::int64_t>(kHeaderBytes));
    const auto found = find_audio(file, {begin, end}, kinds_of(accepted));
    return found || !accepted ? found : accepted->position;
}

// Where audio begins after a tag.
std::optional<std::int64_t> audio_after(FileWindow& file, const ProvenTag& tag,
                                        const std::optional<AcceptedFrame>& accepted) {
    if (!tag.adds_up) {
        return audio_from(file, tag.end, accepted);
    }
    const bool has_audio =
        is_any_header_at(file, tag.end) || (accepted && accepted->position >= tag.end);
    return has_audio ? std::optional(tag.end) : std::nullopt;
}

}  // namespace

TagArea find_tag_area(FileWindow& file, const std::optional<AcceptedFrame>& accepted) {
    constexpr auto kFrameHeader = static_cast<std::int64_t>(kHeaderBytes);
    if (accepted &&
        accepted->position + kFrameHeader <= static_cast<std::int64_t>(FileWindow::kBlock)) {
        file.expect_until(accepted->position + kFrameHeader);  // all of a usual tag at once
    }
    return find_tag_area(file, accepted, find_tag(file));
}

TagArea find_tag_area(FileWindow& file, const std::optional<AcceptedFrame>& accepted,
                      std::optional<std::int64_t> tag) {
    if (!tag) {
        return TagArea::with_audio_at(audio_from(file, 0, accepted));
    }
    if (const auto audio = find_audio(file, {0, *tag}, kinds_of(accepted))) {
        TagArea area = TagArea::with_audio_at(audio);  // the tag is part of it
        area.strippable = ByteRange{0, *audio};
        return area;
    }
    const ProvenTag proven =
        prove_tag(file, *tag, accepted ? std::optional(accepted->position) : std::nullopt);
    if (const auto audio = audio_after(file, proven, accepted)) {
        return {.position = *tag,
                .length = *audio - *tag,
                .kept_from = *audio,
                .audio = audio,
                .strippable = ByteRange{0, *audio}};
    }
    const std::int64_t claimed_end =
        proven.adds_up ? proven.end : read_public_tag_header(file, *tag)->claimed_end;
    const std::int64_t end = believed_end(file, *tag, claimed_end);
    TagArea area;
    area.position = *tag;
    area.length = end - *tag;
    // Nobody knows what stands before such a tag, so all of it is kept.
    area.kept_from = *tag == 0 ? end : 0;
    area.strippable =
        claimed_end <= file.length() ? std::optional(ByteRange{*tag, claimed_end}) : std::nullopt;
    return area;
}

std::int64_t roomy_area(std::int64_t needed) noexcept {
    constexpr std::int64_t kStep = 2048;
    return (needed / kStep + 1) * kStep;
}

}  // namespace brindle
