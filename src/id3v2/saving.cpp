// The members of cMP3ID3v2 that write its edits into the file.
#include <algorithm>
#include <array>
#include <span>
#include <utility>
#include <vector>

#include "id3v2/cMP3ID3v2.h"
#include "id3v2/custom_field_names.h"
#include "id3v2/error_sources.h"
#include "id3v2/stream_finder.h"
#include "id3v2/tag_area.h"
#include "id3v2/tag_builder.h"
#include "id3v2/tag_layout.h"
#include "util/file_exists.h"
#include "util/numeric_text.h"
#include "util/overwrite_file.h"

namespace brindle {

namespace {

FileContent built_tag(const FrameStore& frames) {
    FileContent tag;
    tag.append_owned(build_tag(frames));
    return tag;
}

}  // namespace

void cMP3ID3v2::Update(const SaveOptions& options) {
    with_writer_memory([&] { save(options); });
}

void cMP3ID3v2::save(const SaveOptions& options) {
    const std::unique_ptr<BinaryFile> file = open_for_saving();
    if (!file) {
        return;
    }
    if (fault_) {
        // What was not read would be lost.
        throw fault_->from(kWriterSource);
    }
    const FileState state = as_writer([&] { return file->state(); });
    as_writer([&] { follow_audio(*file, state.length); });
    AddCustomField(kSavedStampName, kSavedStampValue);
    const Id3v1Change record = v1_.plan(*file, state.length);
    const FileContent old_content = with_record(*file, state.length, record);
    const FileToChange target{environment_.files, file_name_, *file, state, options, Owner};
    if (tag_version_ == kOldestVersion) {
        save_converted(target, old_content);
    } else {
        save_directly(target, old_content, record);
    }
}

// Null when there is no such file any more.
std::unique_ptr<BinaryFile> cMP3ID3v2::open_for_saving() const {
    if (file_name_.empty()) {
        return nullptr;
    }
    return as_reader([&]() -> std::unique_ptr<BinaryFile> {
        if (is_missing_) {
            throw Error(RuntimeError::FileNotFound);
        }
        try {
            return environment_.files.open(file_name_, OpenMode::Read);
        } catch (const Error& error) {
            if (is_missing_file(error) && !FileExists(environment_.files, file_name_)) {
                return nullptr;
            }
            throw;
        }
    });
}

// The audio lies where the file was opened or where this object has moved it, unless somebody else
// has changed the file since: then it is looked for again.
void cMP3ID3v2::follow_audio(BinaryFile& file, std::int64_t length) {
    require_addressable_length(length);
    if (length != known_length_) {
        find_audio_again(file);
    }
}

void cMP3ID3v2::find_audio_again(BinaryFile& file) {
    FileWindow window(file);
    accepted_ = find_stream(environment_, file_name_, window);
    known_length_ = window.length();
}

// Of `content`, which is `file` with the record that it will have. The file may be as long as
// before and yet another one.
TagArea cMP3ID3v2::find_area(BinaryFile& file, FileWindow& content) {
    TagArea area = find_tag_area(content, accepted_);
    if (accepted_ && frame_kind_at(content, accepted_->position) != accepted_->kinds.first_frame) {
        find_audio_again(file);
        area = find_tag_area(content, accepted_);
    }
    return area;
}

void cMP3ID3v2::save_directly(const FileToChange& target, const FileContent& old_content,
                              const Id3v1Change& record) {
    ContentFile old_file(old_content);
    FileWindow window(old_file);
    const SaveLayout layout = as_writer([&] {
        SaveLayout found =
            lay_out(old_content, find_area(target.file, window), built_tag(contents_->frames));
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
void cMP3ID3v2::save_in_area(const FileToChange& target, const SaveLayout& layout,
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
    target.announce(SaveWay::InPlace);
    const auto writable =
        as_reader([&] { return environment_.files.open(file_name_, OpenMode::ReadWrite); });
    as_writer([&] { overwrite_file(*writable, target.state, changes); });
}

void cMP3ID3v2::replace_with_layout(const FileToChange& target, const SaveLayout& layout,
                                    std::span<const Overwrite> changes) {
    as_reader([&] { environment_.files.require_writable(file_name_); });
    as_writer([&] { replace_with(target, layout.content, changes); });
}

void cMP3ID3v2::follow(const SaveLayout& layout) {
    known_length_ = layout.content.size();
    if (accepted_) {
        accepted_->position += layout.shift;
    }
}

// A version 2 tag goes, and of what it held the fields that schedules and lists are made of come
// back. Both in one step: were the tag taken off first, a full disk could cost them. What fails
// leaves this object as it was, so that saving can be tried again.
void cMP3ID3v2::save_converted(const FileToChange& target, const FileContent& old_content) {
    const Conversion conversion = as_writer([&] {
        ContentFile old_file(old_content);
        FileWindow window(old_file);
        return converted(old_content, find_area(target.file, window));
    });
    as_writer([&] { conversion.layout.require_addressable(); });
    replace_with_layout(target, conversion.layout);
    become(*conversion.model);
    follow(conversion.layout);
}

cMP3ID3v2::Conversion cMP3ID3v2::converted(const FileContent& old_content,
                                           const TagArea& area) const {
    if (!area.strippable) {
        // Nobody may believe that this was saved.
        throw Error(kEndlessTag);
    }
    FileContent rest;
    rest.append(old_content, {0, area.strippable->begin});
    rest.append(old_content, {area.strippable->end, old_content.size()});
    ContentFile rest_file(rest);
    FileWindow window(rest_file);
    Conversion conversion;
    conversion.model = std::make_unique<cMP3ID3v2>(environment_);
    conversion.model->read_in_place_of(*this, window);
    conversion.model->restore(lasting_fields());
    conversion.model->AddCustomField(kSavedStampName, kSavedStampValue);
    // With audio the rest begins with it. Without, another tag may be left.
    const TagArea rest_area =
        area.audio ? TagArea::with_audio_at(0) : find_tag_area(window, conversion.model->accepted_);
    conversion.layout = lay_out(rest, rest_area, built_tag(conversion.model->contents_->frames));
    return conversion;
}

// What assigning the name of the file at `window` to that object would have made of it.
void cMP3ID3v2::read_in_place_of(const cMP3ID3v2& other, FileWindow& window) {
    Owner = other.Owner;
    contents_->fields.set(StandardField::Lyrics, StoredText(other.Lyrics()));
    contents_->genre = other.contents_->genre;
    initialise();
    file_name_ = other.file_name_;
    read(window);
    if (fault_) {
        throw Error(*fault_);
    }
}

void cMP3ID3v2::become(cMP3ID3v2& other) noexcept {
    analyser_ = std::move(other.analyser_);
    v1_ = std::move(other.v1_);
    contents_ = std::move(other.contents_);
    tag_position_ = other.tag_position_;
    total_tag_length_ = other.total_tag_length_;
    junk_length_ = other.junk_length_;
    tag_version_ = other.tag_version_;
    accepted_ = other.accepted_;
    known_length_ = other.known_length_;
}

cMP3ID3v2::LastingFields cMP3ID3v2::lasting_fields() const {
    return {Artist(), Title(), Year(), CategoryLevel(), GetCustomField(u"Category")};
}

void cMP3ID3v2::restore(const LastingFields& lasting) {
    Artist(lasting.artist);
    Title(lasting.title);
    Year(lasting.year);
    if (lasting.category_level > 0) {
        CategoryLevel(lasting.category_level);
    }
    if (!lasting.category.empty()) {
        AddCustomField(u"Category", lasting.category);
    }
}

// The steps of a save on a copy of the frames.
FrameStore cMP3ID3v2::frames_to_write() const {
    cMP3ID3v2 copy(environment_);
    copy.file_name_ = file_name_;
    if (tag_version_ == kOldestVersion) {
        copy.restore(lasting_fields());
    } else {
        copy.contents_->frames = contents_->frames.copy();
    }
    copy.AddCustomField(kSavedStampName, kSavedStampValue);
    return std::move(copy.contents_->frames);
}

}  // namespace brindle
