#include "id3v2/cMP3ID3v2.h"

#include <new>
#include <utility>

#include <brindle/genres.h>

#include "id3v2/error_sources.h"
#include "id3v2/stream_finder.h"
#include "id3v2/tag_reader.h"
#include "id3v2/tag_search.h"
#include "util/file_exists.h"
#include "util/numeric_text.h"
#include "util/skip_errors.h"

namespace brindle {

cMP3ID3v2::cMP3ID3v2(Environment& environment)
    : environment_(environment),
      analyser_(environment),
      v1_(environment),
      contents_(std::make_unique<TagContents>()) {}

void cMP3ID3v2::initialise() {
    analyser_.forget();
    analyser_.Owner = Owner;
    v1_.forget();
    if (!contents_->is_new()) {
        auto fresh = std::make_unique<TagContents>();
        // Lyrics and genre number outlive the file they were read from.
        contents_->fields.clear_all_but_lyrics();
        fresh->fields = std::move(contents_->fields);
        fresh->genre = contents_->genre;
        contents_ = std::move(fresh);
    }
    tag_position_ = 0;
    junk_length_ = 0;
    tag_version_ = 0;
    edited_.clear();
    fault_.reset();
    accepted_.reset();
    known_length_ = 0;
    is_missing_ = false;
}

// Whatever keeps the file from being read whole keeps it from being written, too.
void cMP3ID3v2::FileName(const String& NewName) {
    try {
        initialise();
        const std::unique_ptr<BinaryFile> file = open_existing(NewName);
        is_missing_ = !file && !file_name_.empty();
        if (file) {
            // Once it is open nothing is raised: the members answer from what was read.
            try {
                FileWindow window(*file);
                read(window);
            } catch (const Error& error) {
                fault_ = error;
            }
        }
    } catch (const Error& error) {
        fault_ = error;
        throw;
    } catch (const std::bad_alloc&) {
        fault_ = kOutOfMemory;
        throw;
    }
}

// Null when there is no such file. The file's name is kept as soon as it is known to exist.
std::unique_ptr<BinaryFile> cMP3ID3v2::open_existing(const String& name) {
    if (name.empty()) {
        return nullptr;
    }
    try {
        auto file = environment_.files.open(name, OpenMode::Read);
        keep_name(name);
        return file;
    } catch (const Error& error) {
        if (!FileExists(environment_.files, name)) {
            return nullptr;
        }
        keep_name(name);
        throw error.from(kReaderSource);
    }
}

// Also for the record, which may be stripped though it could not be read.
void cMP3ID3v2::keep_name(const String& name) {
    file_name_ = name;
    v1_.set_name(name);
}

void cMP3ID3v2::read(FileWindow& file) {
    try {
        v1_.read(file_name_, file);
    } catch (const Error& error) {
        fault_ = error;
    }
    read_tags(file);
    TagsAroundAudio tags{.has_record = v1_.HasID3v1Tag()};
    if (total_tag_length_ >= 1) {
        tags.position = tag_position_ - static_cast<std::int32_t>(kVersionOffset) - 1;
        tags.length = total_tag_length_ + junk_length_;
    }
    analyse(analyser_, file_name_, file, tags);
    if (!fault_) {
        fault_ = analyser_.read_fault();
    }
    accepted_ = accepted_frame(analyser_);
    known_length_ = file.length();
}

void cMP3ID3v2::read_tags(FileWindow& file) {
    total_tag_length_ = 0;
    try {
        const std::optional<std::int32_t> position = find_tag(file);
        if (!position) {
            return;
        }
        constexpr auto kHeader = static_cast<std::int32_t>(kTagHeaderSize);
        tag_position_ = *position + static_cast<std::int32_t>(kVersionOffset) + 1;
        const TagReading first = TagReader(file, *contents_).read(*position);
        tag_version_ = first.version;
        total_tag_length_ = first.size + kHeader;
        fault_ = first.fault ? first.fault : fault_;
        if (first.corrupt) {
            mark_corrupt();
        }
        if (is_tag_at(file, total_tag_length_)) {
            const TagReading second = TagReader(file, *contents_).read(total_tag_length_);
            junk_length_ = second_tag_length(second.size + kHeader, file.length());
            fault_ = second.fault ? second.fault : fault_;
        }
    } catch (const Error& error) {
        fault_ = error;
    }
}

// Distinct entries for distinct corrupt files in the lists of a host.
void cMP3ID3v2::mark_corrupt() {
    contents_->fields.set(StandardField::Artist, StoredText(corrupt_mark()));
    contents_->fields.set(StandardField::Title, StoredText(corrupt_mark()));
}

String cMP3ID3v2::corrupt_mark() const {
    const auto two_digits = [](int number) {
        return (number < 10 ? u"0" : u"") + to_text(std::int32_t{number});
    };
    const Date today = environment_.clock.local_date();
    return u"Corrupt ID3v2 Tag" + two_digits(today.month) + two_digits(today.day) +
           to_text(std::int32_t{today.year}) + u" " +
           to_text(static_cast<double>(environment_.clock.milliseconds_since_start()));
}

String cMP3ID3v2::MonoStereo() const {
    switch (analyser_.ChannelMode()) {
        case 0:
            return u"Stereo";
        case 1:
            return u"Joint Stereo";
        case 2:  // dual channel: two languages, one of which is heard
        case 3:
            return u"Mono";
        default:
            return {};
    }
}

String cMP3ID3v2::MpegLayer() const {
    return to_text(std::int32_t{analyser_.MpegLayer()});
}

String cMP3ID3v2::MpegVersion() const {
    return to_text(std::int32_t{analyser_.MpegVersion()});
}

String cMP3ID3v2::GenreName(std::uint8_t Genre) const {
    return brindle::GenreName(Genre);
}

}  // namespace brindle
