#include "id3v2/tag_writer.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "id3v2/custom_field_names.h"
#include "id3v2/error_sources.h"
#include "id3v2/stream_finder.h"
#include "id3v2/tag_builder.h"
#include "id3v2/tag_layout.h"
#include "util/numeric_text.h"

namespace brindle {

namespace {

FileContent built_tag(const FrameStore& frames) {
    FileContent tag;
    tag.append_owned(build_tag(frames));
    return tag;
}

// Either the tag is removed, or nothing changes: no partial success may be reported.
ByteRange require_strippable(const TagArea& area) {
    if (!area.strippable) {
        throw Error(kEndlessTag);
    }
    return *area.strippable;
}

// What of a version 2 tag outlives its conversion.
void restore(TagContents& tag, const TagContents& version2) {
    for (const StandardField field :
         {StandardField::Artist, StandardField::Title, StandardField::Year}) {
        tag.set(field, version2.text(field));
    }
    const String level = version2.custom().text(kCategoryLevel);
    if (const auto number = number_or_0<std::int16_t>(level, to_integer); number > 0) {
        tag.set_custom(String(kCategoryLevel.begin(), kCategoryLevel.end()),
                       to_text(std::int32_t{number}));
    }
    if (const String category = version2.custom().text(kCategory); !category.empty()) {
        tag.set_custom(String(kCategory.begin(), kCategory.end()), category);
    }
}

constexpr std::int32_t kStripId3v1 = 1;
constexpr std::int32_t kStripId3v2 = 2;
constexpr std::int32_t kStripBoth = 3;

}  // namespace

void TagWriter::save(const SaveOptions& options) {
    const std::unique_ptr<BinaryFile> file = reading_.open_to_save();
    if (!file) {
        return;
    }
    reading_.require_whole(kWriterSource);
    const FileState state = as_writer([&] { return file->state(); });
    as_writer([&] { follow_audio(*file, state.length); });
    reading_.tag().set_saved_stamp();
    const Id3v1Change record = reading_.record.plan(*file, state.length);
    const FileContent old_content = with_record(*file, state.length, record);
    const FileToChange target{
        reading_.environment().files, reading_.name(), *file, state, options, host_};
    if (reading_.tag_version == kOldestVersion) {
        save_converted(target, old_content);
    } else {
        save_directly(target, old_content, record);
    }
}

// The audio lies where the file was opened or where this object has moved it, unless another
// program has changed the file since: then it is looked for again.
void TagWriter::follow_audio(BinaryFile& file, std::int64_t length) {
    require_addressable_length(length);
    if (length != reading_.known_length) {
        find_audio_again(file);
    }
}

void TagWriter::find_audio_again(BinaryFile& file) {
    FileWindow window(file);
    reading_.accepted = find_stream(reading_.environment(), reading_.name(), window);
    reading_.known_length = window.length();
}

// Of `content`, which is `file` with the record that it will have. The file may be as long as
// before and yet another one.
TagArea TagWriter::find_area(BinaryFile& file, FileWindow& content) {
    TagArea area = find_tag_area(content, reading_.accepted);
    if (reading_.accepted && frame_kind_at(content, reading_.accepted->position) !=
                                 reading_.accepted->kinds.first_frame) {
        find_audio_again(file);
        area = find_tag_area(content, reading_.accepted);
    }
    return area;
}

void TagWriter::save_directly(const FileToChange& target, const FileContent& old_content,
                              const Id3v1Change& record) {
    ContentFile old_file(old_content);
    FileWindow window(old_file);
    const SaveLayout layout = as_writer([&] {
        SaveLayout found =
            lay_out(old_content, find_area(target.file, window), built_tag(reading_.tag().frames));
        found.require_addressable();
        return found;
    });
    if (layout.keeps_length) {
        save_in_area(target, layout, record, window);
    } else {
        replace_with_layout(target, layout);
    }
    follow(layout);
}

// The new tag fits into the old one's place.
void TagWriter::save_in_area(const FileToChange& target, const SaveLayout& layout,
                             const Id3v1Change& record, FileWindow& old_content) {
    const std::int64_t old_end =
        std::min(layout.tag_position + layout.tag.size(), target.state.length);
    std::vector<std::uint8_t> old_tag(
        static_cast<std::size_t>(std::max<std::int64_t>(old_end - layout.tag_position, 0)));
    as_writer([&] {
        if (old_content.copy(layout.tag_position, old_tag) < old_tag.size()) {
            throw Error(RuntimeError::InputPastEnd);
        }
    });
    const std::vector<std::uint8_t> tag = layout.tag.read_all();
    const std::array<Overwrite, 2> pieces{
        Overwrite{record.offset, record.bytes(), record.old_bytes()},
        Overwrite{layout.tag_position, tag, old_tag}};
    const auto changes = std::span(pieces).subspan(record.kind == Id3v1Change::Kind::None ? 1 : 0);
    if (target.options.atomic) {
        replace_with_layout(target, layout, changes);
        return;
    }
    as_writer([&] { target.announce_content(layout.content); });
    target.announce(SaveWay::InPlace);
    const auto writable = as_reader(
        [&] { return reading_.environment().files.open(reading_.name(), OpenMode::ReadWrite); });
    as_writer([&] { overwrite_file(*writable, target.state, changes); });
}

void TagWriter::replace_with_layout(const FileToChange& target, const SaveLayout& layout,
                                    std::span<const Overwrite> changes) {
    as_reader([&] { reading_.environment().files.require_writable(reading_.name()); });
    as_writer([&] { replace_with(target, layout.content, changes); });
}

void TagWriter::follow(const SaveLayout& layout) {
    reading_.known_length = layout.content.size();
    if (reading_.accepted) {
        reading_.accepted->position += layout.shift;
    }
}

// The old tag and what comes back of it change places in one step: were the tag taken off first, a
// full disk could cost it. What fails leaves the reading as it was, so that saving can be tried
// again.
void TagWriter::save_converted(const FileToChange& target, const FileContent& old_content) {
    Conversion conversion = as_writer([&] {
        ContentFile old_file(old_content);
        FileWindow window(old_file);
        return convert_version2(reading_, old_content, find_area(target.file, window));
    });
    as_writer([&] { conversion.layout.require_addressable(); });
    replace_with_layout(target, conversion.layout);
    reading_ = std::move(conversion.reading);
    follow(conversion.layout);
}

void TagWriter::strip(std::int32_t tags, const SaveOptions& options) {
    const auto file = reading_.environment().files.open(reading_.name(), OpenMode::Read);
    const FileState state = file->state();
    follow_audio(*file, state.length);
    TagArea area;
    if (strips_tag(tags)) {
        FileWindow window(*file, state.length);
        area = find_area(*file, window);
    }
    const StrippedFile stripped = strip_tags(*file, state.length, tags, area);
    if (stripped.content.size() != state.length) {
        replace_with({reading_.environment().files, reading_.name(), *file, state, options, host_},
                     stripped.content);
    }
}

Conversion convert_version2(const FileReading& reading, const FileContent& old_content,
                            const TagArea& area) {
    const ByteRange old_tag = require_strippable(area);
    FileContent rest;
    rest.append(old_content, {0, old_tag.begin});
    rest.append(old_content, {old_tag.end, old_content.size()});
    ContentFile rest_file(rest);
    FileWindow window(rest_file);
    Conversion conversion{{}, FileReading(reading.environment())};
    FileReading& converted = conversion.reading;
    converted.tag().take_lasting(reading.tag());
    converted.read(reading.name(), window, reading.analyser.Owner);
    if (const std::optional<Error> fault = converted.fault()) {
        throw Error(*fault);
    }
    restore(converted.tag(), reading.tag());
    converted.tag().set_saved_stamp();
    // With audio the rest begins with it. Without, another tag may be left.
    const TagArea rest_area =
        area.audio ? TagArea::with_audio_at(0) : find_tag_area(window, converted.accepted);
    conversion.layout = lay_out(rest, rest_area, built_tag(converted.tag().frames));
    return conversion;
}

FrameStore frames_to_save(const FileReading& reading) {
    TagContents copy;
    if (reading.tag_version == kOldestVersion) {
        restore(copy, reading.tag());
    } else {
        copy.frames = reading.tag().frames.copy();
    }
    copy.set_saved_stamp();
    return std::move(copy.frames);
}

bool strips_record(std::int32_t tags) noexcept {
    return tags == kStripId3v1 || tags == kStripBoth;
}

bool strips_tag(std::int32_t tags) noexcept {
    return tags == kStripId3v2 || tags == kStripBoth;
}

StrippedFile strip_tags(BinaryFile& file, std::int64_t length, std::int32_t tags,
                        const TagArea& area) {
    StrippedFile stripped;
    stripped.end = strips_record(tags) ? length_without_id3v1_record(file, length) : length;
    stripped.tag = strips_tag(tags) ? require_strippable(area) : ByteRange();
    stripped.content.append(file, {0, std::min(stripped.tag.begin, stripped.end)});
    stripped.content.append(file, {stripped.tag.end, stripped.end});
    return stripped;
}

}  // namespace brindle
