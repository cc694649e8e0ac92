// The members of cMP3ID3v2 that write its edits into the file.
#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "id3v2/audio_start.h"
#include "id3v2/cMP3ID3v2.h"
#include "id3v2/cut_file.h"
#include "id3v2/error_sources.h"
#include "id3v2/tag_area.h"
#include "id3v2/tag_builder.h"
#include "id3v2/tag_layout.h"
#include "mpeg/frame_header.h"
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
        throw Error(kWriterOutOfMemory);
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
    known_length_ = v1_.Update(*file, length);
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
        throw Error(*now.fault_);
    }
    accepted_ = now.accepted_;
    known_length_ = now.known_length_;
}

// The file may be as long as before and yet another one.
void cMP3ID3v2::trust_or_find_audio(FileWindow& file) {
    constexpr auto kHeader = static_cast<std::int64_t>(kHeaderBytes);
    if (accepted_ && *accepted_ + kHeader <= static_cast<std::int64_t>(FileWindow::kHeadBlock)) {
        // Where the tag stands is asked next, so both are read at once.
        (void)file.view(0, static_cast<std::size_t>(*accepted_ + kHeader));
    }
    if (accepted_ && !is_frame_at(file, *accepted_)) {
        find_audio_again();
    }
}

void cMP3ID3v2::WriteTag(std::unique_ptr<BinaryFile> file) {
    FileWindow window(*file, known_length_);
    trust_or_find_audio(window);
    if (tag_version_ == kOldestVersion) {
        convert_version2(std::move(file), window);
        return;
    }
    std::vector<std::uint8_t> tag = build_tag(contents_->frames);
    const auto needed = static_cast<std::int64_t>(tag.size());

    const TagArea area = find_tag_area(window, accepted_);
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
// back. Both in one step: were the tag taken off first, a full disk could cost them. What fails
// leaves this object as it was, so that saving can be tried again.
void cMP3ID3v2::convert_version2(std::unique_ptr<BinaryFile> old_file, FileWindow& window) {
    const std::optional<Stretch> stripped = find_strippable(window, accepted_);
    if (!stripped) {
        // Nobody may believe that this was saved.
        throw Error(RuntimeError::InvalidCall);
    }
    CutFile rest(*old_file, *stripped);
    FileWindow rest_window(rest, window.length() - stripped->length());
    cMP3ID3v2 converted(environment_);
    converted.read_in_place_of(*this, rest_window);
    converted.restore(lasting_fields());
    converted.AddCustomField(kSavedStampName, kSavedStampValue);

    std::vector<std::uint8_t> tag = build_tag(converted.contents_->frames);
    const auto needed = static_cast<std::int64_t>(tag.size());
    const TagArea area = find_tag_area(rest_window, converted.accepted_);
    // Without audio another tag may be left.
    const bool fits = area.fits(needed);
    const std::int64_t tag_begin = fits ? *area.position : 0;
    const std::int64_t tag_length = fits ? area.length : roomy_area(needed);
    const std::int64_t kept_from = fits ? tag_begin + tag_length : area.kept_from;
    const std::int64_t kept_end = std::max(rest_window.length(), kept_from);
    fit_tag(tag, static_cast<std::size_t>(tag_length));
    replace_file(environment_.files, file_name_, [&](BinaryFile& new_file) {
        rest.copy_to(new_file, 0, 0, tag_begin, Owner);
        new_file.write_at(tag_begin, tag);
        rest.copy_to(new_file, tag_begin + tag_length, kept_from, rest_window.length(), Owner);
        old_file->close();
    });
    converted.known_length_ = tag_begin + tag_length + kept_end - kept_from;
    if (converted.accepted_) {
        *converted.accepted_ += tag_begin + tag_length - kept_from;
    }
    become(converted);
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
