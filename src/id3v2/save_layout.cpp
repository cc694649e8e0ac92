#include "id3v2/save_layout.h"

#include <algorithm>
#include <optional>
#include <span>

#include <brindle/error.h>
#include <brindle/new_content.h>

#include "id3v2/stream_finder.h"
#include "id3v2/tag_builder.h"
#include "mpeg/audio_start.h"
#include "util/overwrite_file.h"
#include "util/replace_file.h"

namespace brindle {

FileContent with_record(BinaryFile& file, std::int64_t length, const Id3v1Change& record) {
    FileContent content;
    content.append(file, {0, record.kind == Id3v1Change::Kind::None ? length : record.offset});
    content.append(record.bytes());
    return content;
}

namespace {

// The tag at `area`, or in front of what is kept in `room` bytes.
SaveLayout lay_out(const FileContent& file, const TagArea& area, const FileContent& tag,
                   std::optional<std::int64_t> room) {
    SaveLayout layout;
    layout.keeps_length = !room;
    const std::int64_t tag_length = room.value_or(area.length);
    layout.tag_position = layout.keeps_length ? *area.position : 0;
    const std::int64_t kept_from =
        layout.keeps_length ? layout.tag_position + tag_length : area.kept_from;
    layout.shift = layout.tag_position + tag_length - kept_from;
    layout.tag = fitted_tag(tag, tag_length);
    layout.content.append(file, {0, layout.tag_position});
    layout.content.append(layout.tag);
    layout.content.append(file, {kept_from, file.size()});
    return layout;
}

// The next save will believe the tag's size. By chance it would not where bytes of the tag look
// like a frame that ends exactly with the tag.
bool is_believable(const SaveLayout& layout) {
    const std::int64_t end = layout.tag.size();
    if (!holds_header(layout.tag.read({std::max<std::int64_t>(end - kLongestFrame, 0), end}))) {
        return true;
    }
    ContentFile file(layout.content);
    FileWindow window(file);
    return !frame_ends_at(window, layout.tag_position, layout.tag_position + end);
}

}  // namespace

SaveLayout lay_out(const FileContent& file, const TagArea& area, const FileContent& tag) {
    const std::int64_t needed = tag.size();
    std::optional<std::int64_t> room;
    if (!area.fits(needed)) {
        room = roomy_area(needed);
    }
    SaveLayout layout = lay_out(file, area, tag, room);
    while (!is_believable(layout)) {
        room = roomy_area(std::max(room.value_or(0), needed));
        layout = lay_out(file, area, tag, room);
    }
    return layout;
}

void SaveLayout::require_addressable() const {
    require_addressable_length(content.size());
}

void require_addressable_length(std::int64_t length) {
    constexpr std::int64_t kMaxLength = 2'147'483'647;
    if (length > kMaxLength) {
        throw Error(static_cast<std::int32_t>(RuntimeError::Overflow),
                    u"Files of more than 2,147,483,647 bytes cannot be saved");
    }
}

void require_tag_length(std::int64_t length) {
    constexpr std::int64_t kEnd = std::int64_t{1} << 28;  // a size has 28 bits
    if (length >= kEnd) {
        throw Error(static_cast<std::int32_t>(RuntimeError::Overflow),
                    u"A tag has at most 268,435,455 bytes");
    }
}

// Where the tag ends exactly at the accepted frame hosts begin with that frame, as before: only
// other files have to be looked at.
bool loses_stream(Environment& environment, const String& name, const SaveLayout& layout,
                  const std::optional<AcceptedFrame>& accepted) {
    // A tag in a shorter file, or of more than half of it, is overlooked. In a file that gets
    // shorter a Xing header may count more bytes than there are.
    constexpr std::int64_t kShortFile = 8192;
    const std::int64_t tag_end = layout.tag_position + layout.tag.size();
    const bool is_plain = accepted && accepted->position + layout.shift == tag_end &&
                          layout.shift >= 0 && tag_end <= layout.content.size() / 2 &&
                          layout.tag_position == 0 && layout.content.size() > kShortFile;
    return accepted && !is_plain && !has_stream(environment, name, layout.content);
}

void FileToChange::announce(SaveWay way) const {
    if (options.before_change) {
        options.before_change(way);
    }
}

void FileToChange::announce_content(const FileContent& content) const {
    if (options.before_write) {
        options.before_write(content.around_last_range_of(file));
    }
}

void replace_with(const FileToChange& target, const FileContent& content,
                  std::span<const Overwrite> changes) {
    target.announce_content(content);
    const auto fill = [&](BinaryFile& new_file) {
        if (!changes.empty() && target.files.clone(target.file, new_file)) {
            for (const Overwrite& change : changes) {
                new_file.write_at(change.offset, change.bytes);
            }
        } else {
            content.copy_to(new_file, 0, target.host);
        }
        target.file.close();
    };
    replace_file(target.files, target.name, fill, {.expected = target.state, .before_rename = [&] {
                                                       target.announce(SaveWay::Replace);
                                                   }});
}

}  // namespace brindle
