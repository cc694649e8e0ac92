#include "id3v2/save_layout.h"

#include <algorithm>
#include <optional>
#include <span>

#include <brindle/error.h>

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
SaveLayout lay_out(const FileContent& file, const TagArea& area, std::span<const std::uint8_t> tag,
                   std::optional<std::int64_t> room) {
    SaveLayout layout;
    layout.keeps_length = !room;
    const std::int64_t tag_length = room.value_or(area.length);
    layout.tag_position = layout.keeps_length ? *area.position : 0;
    const std::int64_t kept_from =
        layout.keeps_length ? layout.tag_position + tag_length : area.kept_from;
    layout.shift = layout.tag_position + tag_length - kept_from;
    layout.tag.assign(tag.begin(), tag.end());
    fit_tag(layout.tag, static_cast<std::size_t>(tag_length));
    layout.content.append(file, {0, layout.tag_position});
    layout.content.append(layout.tag);
    layout.content.append(file, {kept_from, file.size()});
    return layout;
}

// The next save will believe the tag's size. By chance it would not where bytes of the tag look
// like a frame that ends exactly with the tag.
bool is_believable(const SaveLayout& layout) {
    const auto last =
        std::span(layout.tag)
            .last(std::min(layout.tag.size(), static_cast<std::size_t>(kLongestFrame)));
    if (!holds_header(last)) {
        return true;
    }
    ContentFile file(layout.content);
    FileWindow window(file);
    return !frame_ends_at(window, layout.tag_position,
                          layout.tag_position + static_cast<std::int64_t>(layout.tag.size()));
}

}  // namespace

SaveLayout lay_out(const FileContent& file, const TagArea& area,
                   std::span<const std::uint8_t> tag) {
    const auto needed = static_cast<std::int64_t>(tag.size());
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

void FileToChange::announce(SaveWay way) const {
    if (options.before_change) {
        options.before_change(way);
    }
}

void replace_with(const FileToChange& target, const FileContent& content,
                  std::span<const Overwrite> changes) {
    const auto fill = [&](BinaryFile& new_file) {
        if (!changes.empty() && target.files.clone(target.file, new_file)) {
            for (const Overwrite& change : changes) {
                new_file.write_at(change.offset, change.bytes);
            }
        } else {
            content.copy_to(new_file, target.host);
        }
        target.file.close();
    };
    replace_file(target.files, target.name, fill, {.expected = target.state, .before_rename = [&] {
                                                       target.announce(SaveWay::Replace);
                                                   }});
}

}  // namespace brindle
