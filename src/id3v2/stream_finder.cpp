#include "id3v2/stream_finder.h"

#include <array>

#include <brindle/error.h>

#include "id3v1/id3v1_record.h"
#include "id3v2/public_tag_reader.h"
#include "id3v2/tag_layout.h"
#include "id3v2/tag_search.h"
#include "mpeg/frame_header.h"

namespace brindle {

namespace {

std::int32_t tag_length_at(FileWindow& file, std::int64_t position) {
    const auto header = read_public_tag_header(file, position);
    return header ? static_cast<std::int32_t>(header->claimed_end - position) : 0;
}

TagsAroundAudio find_tags(FileWindow& file) {
    TagsAroundAudio tags;
    std::array<std::uint8_t, kId3v1Identifier.width> identifier{};
    const std::int64_t record = file.length() - static_cast<std::int64_t>(kId3v1Length);
    tags.has_record = record > 0 && file.copy(record, identifier) == identifier.size() &&
                      is_id3v1_identifier(identifier);
    const std::optional<std::int32_t> first = find_tag(file);
    if (!first) {
        return tags;
    }
    tags.position = *first;
    tags.length = tag_length_at(file, *first);
    if (is_tag_at(file, tags.length)) {
        tags.length += second_tag_length(tag_length_at(file, tags.length), file.length());
    }
    return tags;
}

}  // namespace

std::int32_t second_tag_length(std::int32_t length, std::int64_t file_length) {
    constexpr auto kHeader = static_cast<std::int32_t>(kTagHeaderSize);
    return std::int64_t{length - kHeader} * 2 < file_length ? length : 0;
}

void analyse(clsMPEG& analyser, const String& name, FileWindow& file, const TagsAroundAudio& tags) {
    analyser.ID3v2Length = tags.length;
    analyser.ID3v2Offset = tags.position;
    analyser.HasV1Tag = tags.has_record;
    analyser.analyse(name, file);
}

std::optional<AcceptedFrame> find_stream(Environment& environment, const String& name,
                                         FileWindow& file) {
    clsMPEG analyser(environment);
    analyse(analyser, name, file, find_tags(file));
    if (analyser.read_fault()) {
        throw Error(*analyser.read_fault());
    }
    return accepted_frame(analyser);
}

bool has_stream(Environment& environment, const String& name, const FileContent& content) {
    ContentFile file(content);
    FileWindow window(file);
    return find_stream(environment, name, window).has_value();
}

std::optional<AcceptedFrame> accepted_frame(const clsMPEG& analyser) {
    const std::optional<std::int32_t> position = analyser.accepted_position();
    if (!position) {
        return std::nullopt;
    }
    return AcceptedFrame{*position, analyser.stream_kinds()};
}

}  // namespace brindle
