// The members of cMP3ID3v2 that take tags off the file.
#include <algorithm>

#include "id3v2/cMP3ID3v2.h"
#include "id3v2/error_sources.h"
#include "id3v2/stream_finder.h"
#include "util/skip_errors.h"

namespace brindle {

namespace {

constexpr std::int32_t kStripId3v1 = 1;
constexpr std::int32_t kStripId3v2 = 2;
constexpr std::int32_t kStripBoth = 3;

bool strips_record(std::int32_t tags) {
    return tags == kStripId3v1 || tags == kStripBoth;
}

bool strips_tag(std::int32_t tags) {
    return tags == kStripId3v2 || tags == kStripBoth;
}

// What a strip leaves of the file, up to `end`.
FileContent stripped(BinaryFile& file, const ByteRange& tag, std::int64_t end) {
    FileContent content;
    content.append(file, {0, std::min(tag.begin, end)});
    content.append(file, {tag.end, end});
    return content;
}

// The tag goes, or nothing does.
ByteRange require_strippable(const TagArea& area) {
    if (!area.strippable) {
        throw Error(kEndlessTag);
    }
    return *area.strippable;
}

}  // namespace

bool cMP3ID3v2::StripTags(std::int32_t TagsToStrip) {
    return skip_errors([&] { RemoveTags(TagsToStrip, {}); });
}

void cMP3ID3v2::RemoveTags(std::int32_t tags, const SaveOptions& options) {
    if (strips_record(tags) || strips_tag(tags)) {
        as_writer([&] { strip(tags, options); });
    }
    skip_errors([&] { reload(); });
}

// Both go in one step, by the facts of the file as it was before.
void cMP3ID3v2::strip(std::int32_t tags, const SaveOptions& options) {
    const auto file = environment_.files.open(file_name_, OpenMode::Read);
    const FileState state = file->state();
    follow_audio(*file, state.length);
    const std::int64_t end =
        strips_record(tags) ? length_without_id3v1_record(*file, state.length) : state.length;
    ByteRange tag;
    if (strips_tag(tags)) {
        FileWindow window(*file, state.length);
        tag = require_strippable(find_area(*file, window));
    }
    const FileContent content = stripped(*file, tag, end);
    if (content.size() != state.length) {
        replace_with({environment_.files, file_name_, *file, state, options, Owner}, content);
    }
}

void cMP3ID3v2::plan_strip(BinaryFile& file, std::int32_t tags, StripPlan& plan) const {
    FileWindow window(file);
    const std::int64_t length = window.length();
    require_addressable_length(length);
    const std::int64_t end =
        strips_record(tags) ? length_without_id3v1_record(file, length) : length;
    const std::optional<AcceptedFrame> accepted = accepted_in(window);
    const ByteRange tag =
        strips_tag(tags) ? require_strippable(find_tag_area(window, accepted)) : ByteRange();
    const FileContent content = stripped(file, tag, end);
    plan.record_bytes = length - end;
    plan.tag_bytes = end - content.size();
    plan.loses_stream =
        accepted && content.size() != length && !has_stream(environment_, file_name_, content);
}

void cMP3ID3v2::reload() {
    const String name = file_name_;
    FileName(name);
}

}  // namespace brindle
