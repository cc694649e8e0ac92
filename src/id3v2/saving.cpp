// The members of cMP3ID3v2 that write its edits into the file.
#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "id3v2/audio_start.h"
#include "id3v2/cMP3ID3v2.h"
#include "id3v2/error_sources.h"
#include "id3v2/tag_area.h"
#include "id3v2/tag_builder.h"
#include "id3v2/tag_layout.h"
#include "util/copy_bytes.h"
#include "util/file_exists.h"
#include "util/numeric_text.h"
#include "util/replace_file.h"

namespace brindle {

namespace {

// Every saved tag bears it. Not the text that a first custom field leaves.
const String kSavedStampName = u"TAGGED BY";
const String kSavedStampValue = u"CorvaneTagger- Revised Feb 2011";

}  // namespace

void cMP3ID3v2::Update() {
    try {
        save();
    } catch (const std::bad_alloc&) {
        throw Error(RuntimeError::OutOfMemory, kWriterSource);
    }
}

void cMP3ID3v2::save() {
    std::unique_ptr<BinaryFile> file = open_for_saving();
    if (!file) {
        return;
    }
    if (fault_) {
        // What was not read would be lost.
        throw fault_->from(kWriterSource);
    }
    const std::int64_t length = as_writer([&] { return file->length(); });
    as_writer([&] { follow_audio(length); });
    AddCustomField(kSavedStampName, kSavedStampValue);
    known_length_ = v1_->Update(*file, length);
    as_writer([&] { WriteTag(std::move(file)); });
}

// Null when there is no such file any more.
std::unique_ptr<BinaryFile> cMP3ID3v2::open_for_saving() {
    if (file_name_.empty()) {
        return nullptr;
    }
    try {
        return environment_.files.open(file_name_, OpenMode::ReadWrite);
    } catch (const Error& error) {
        if (!FileExists(environment_.files, file_name_)) {
            return nullptr;
        }
        // The ID3v1 record is written first, and its errors name it.
        throw error.from(kReaderSource);
    }
}

// The audio lies where the file was opened or where this object has moved it, unless somebody else
// has changed the file since: then it is looked for again.
void cMP3ID3v2::follow_audio(std::int64_t length) {
    require_addressable(length);
    if (length != known_length_) {
        find_audio_again();
    }
}

void cMP3ID3v2::require_addressable(std::int64_t length) {
    constexpr std::int64_t kMostBytes = 2'147'483'647;
    if (length > kMostBytes) {
        throw Error(RuntimeError::Overflow);
    }
}

// Without an owner, so that the host hears nothing of it.
void cMP3ID3v2::find_audio_again() {
    cMP3ID3v2 now(environment_);
    now.FileName(file_name_);
    if (now.fault_) {
        throw *now.fault_;
    }
    accepted_ = now.accepted_;
    known_length_ = now.known_length_;
}

void cMP3ID3v2::WriteTag(std::unique_ptr<BinaryFile> file) {
    if (tag_version_ == kOldestVersion) {
        file->close();
        convert_version2();
        file = environment_.files.open(file_name_, OpenMode::ReadWrite);
    }
    std::vector<std::uint8_t> tag = build_tag(contents_->frames);
    const auto needed = static_cast<std::int64_t>(tag.size());

    FileWindow window(*file, known_length_);
    TagArea area = find_tag_area(window, accepted_);
    if (accepted_ && !is_frame_at(window, *accepted_)) {
        // As long as before, and yet another file.
        find_audio_again();
        area = find_tag_area(window, accepted_);
    }
    if (area.fits(needed)) {
        fit_tag(tag, static_cast<std::size_t>(area.length));
        file->write_at(*area.position, tag);
        file->close();
        known_length_ = std::max(known_length_, *area.position + area.length);
        return;
    }
    fit_tag(tag, static_cast<std::size_t>(roomy_area(needed)));
    CopyAudioToNewFile(std::move(file), tag, area.kept_from);
}

// The tag, then the old file from `kept_from` on, under the old name.
void cMP3ID3v2::CopyAudioToNewFile(std::unique_ptr<BinaryFile> old_file,
                                   std::span<const std::uint8_t> tag, std::int64_t kept_from) {
    const auto tag_length = static_cast<std::int64_t>(tag.size());
    const std::int64_t kept = std::max<std::int64_t>(known_length_ - kept_from, 0);
    replace_file(environment_.files, file_name_, [&](BinaryFile& new_file) {
        new_file.write_at(0, tag);
        copy_bytes(*old_file, kept_from, new_file, tag_length, kept, Owner);
        old_file->close();
    });
    known_length_ = tag_length + kept;
    if (accepted_) {
        *accepted_ += tag_length - kept_from;
    }
}

// A version 2 tag goes, and of what it held the fields that schedules and lists are made of come
// back.
void cMP3ID3v2::convert_version2() {
    const LastingFields lasting = lasting_fields();
    if (!strip(kStripId3v2)) {
        // Nobody may believe that this was saved.
        throw Error(RuntimeError::InvalidCall);
    }
    reload();
    restore(lasting);
    AddCustomField(kSavedStampName, kSavedStampValue);
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
