#include "id3v2/file_reading.h"

#include <array>
#include <new>
#include <utility>

#include "id3v1/id3v1_record.h"
#include "id3v2/error_sources.h"
#include "id3v2/stream_finder.h"
#include "id3v2/tag_reader.h"
#include "id3v2/tag_search.h"
#include "mpeg/frame_walker.h"
#include "util/file_exists.h"
#include "util/numeric_text.h"

namespace brindle {

namespace {

// Where the ID3v1 record begins, or the file ends.
std::int64_t audio_end(FileWindow& file) {
    constexpr auto kRecord = static_cast<std::int64_t>(kId3v1Length);
    std::array<std::uint8_t, kId3v1Identifier.width> identifier{};
    const std::int64_t record = file.length() - kRecord;
    const bool has_record = record >= 0 && file.copy(record, identifier) == identifier.size() &&
                            is_id3v1_identifier(identifier);
    return has_record ? record : file.length();
}

}  // namespace

FileReading::FileReading(Environment& environment)
    : analyser(environment),
      record(environment),
      environment_(&environment),
      tag_(std::make_unique<TagContents>()) {}

void FileReading::start_over(Host* host) {
    analyser.forget();
    analyser.Owner = host;
    record.forget();
    if (!tag_->is_new()) {
        auto fresh = std::make_unique<TagContents>();
        fresh->take_lasting(*tag_);
        tag_ = std::move(fresh);
    }
    tag_position = 0;
    junk_length = 0;
    tag_version = 0;
    fault_.reset();
    accepted.reset();
    known_length = 0;
    is_missing_ = false;
}

// An error that keeps the file from being read whole keeps it from being written, too.
void FileReading::open(const String& name, Host* host) {
    try {
        start_over(host);
        const std::unique_ptr<BinaryFile> file = open_existing(name);
        is_missing_ = !file && !(name.empty() && name_.empty());
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

void FileReading::read(const String& name, FileWindow& file, Host* host) {
    start_over(host);
    keep_name(name);
    read(file);
}

// Null when there is no such file. The file's name is kept as soon as it is known to exist.
std::unique_ptr<BinaryFile> FileReading::open_existing(const String& name) {
    if (name.empty()) {
        return nullptr;
    }
    try {
        auto file = environment_->files.open(name, OpenMode::Read);
        keep_name(name);
        return file;
    } catch (const Error& error) {
        if (!FileExists(environment_->files, name)) {
            return nullptr;
        }
        keep_name(name);
        throw error.from(kReaderSource);
    }
}

// Also for the record, which may be stripped though it could not be read.
void FileReading::keep_name(const String& name) {
    name_ = name;
    record.set_name(name);
}

void FileReading::read(FileWindow& file) {
    try {
        record.read(name_, file);
    } catch (const Error& error) {
        fault_ = error;
    }
    read_tags(file);
    TagsAroundAudio tags{.has_record = record.HasID3v1Tag()};
    if (tag_length >= 1) {
        tags.position = tag_position - static_cast<std::int32_t>(kVersionOffset) - 1;
        tags.length = tag_length + junk_length;
    }
    analyse(analyser, name_, file, tags);
    if (!fault_) {
        fault_ = analyser.read_fault();
    }
    accepted = accepted_frame(analyser);
    known_length = file.length();
}

void FileReading::read_tags(FileWindow& file) {
    tag_length = 0;
    try {
        const std::optional<std::int32_t> position = find_tag(file);
        if (!position) {
            return;
        }
        constexpr auto kHeader = static_cast<std::int32_t>(kTagHeaderSize);
        tag_position = *position + static_cast<std::int32_t>(kVersionOffset) + 1;
        const TagReading first = TagReader(file, *tag_).read(*position);
        tag_version = first.version;
        tag_length = first.size + kHeader;
        fault_ = first.fault ? first.fault : fault_;
        if (first.corrupt) {
            mark_corrupt();
        }
        if (is_tag_at(file, tag_length)) {
            const TagReading second = TagReader(file, *tag_).read(tag_length);
            junk_length = second_tag_length(second.size + kHeader, file.length());
            fault_ = second.fault ? second.fault : fault_;
        }
    } catch (const Error& error) {
        fault_ = error;
    }
}

// Distinct entries for distinct corrupt files in the lists of a host.
void FileReading::mark_corrupt() {
    tag_->set_answer(StandardField::Artist, corrupt_mark());
    tag_->set_answer(StandardField::Title, corrupt_mark());
}

String FileReading::corrupt_mark() const {
    const auto two_digits = [](int number) {
        return (number < 10 ? u"0" : u"") + to_text(std::int32_t{number});
    };
    const Date today = environment_->clock.local_date();
    return u"Corrupt ID3v2 Tag" + two_digits(today.month) + two_digits(today.day) +
           to_text(std::int32_t{today.year}) + u" " +
           to_text(static_cast<double>(environment_->clock.milliseconds_since_start()));
}

std::optional<Error> FileReading::fault() const {
    return tag_->is_incomplete() ? std::optional(kOutOfMemory) : fault_;
}

void FileReading::require_whole(const String& source) const {
    if (const std::optional<Error> known = fault()) {
        throw known->from(source);
    }
}

std::optional<Error> FileReading::opening_error() const {
    return is_missing_ ? std::optional(Error(RuntimeError::FileNotFound, kReaderSource)) : fault();
}

std::unique_ptr<BinaryFile> FileReading::open_to_save() const {
    if (name_.empty()) {
        return nullptr;
    }
    return as_reader([&]() -> std::unique_ptr<BinaryFile> {
        if (is_missing_) {
            throw Error(RuntimeError::FileNotFound);
        }
        try {
            return environment_->files.open(name_, OpenMode::Read);
        } catch (const Error& error) {
            if (is_missing_file(error) && !FileExists(environment_->files, name_)) {
                return nullptr;
            }
            throw;
        }
    });
}

std::unique_ptr<BinaryFile> FileReading::open_to_look() const {
    return is_missing_ ? nullptr : open_to_save();
}

std::optional<AcceptedFrame> FileReading::accepted_in(FileWindow& file) const {
    const bool is_known =
        file.length() == known_length &&
        (!accepted || frame_kind_at(file, accepted->position) == accepted->kinds.first_frame);
    return is_known ? accepted : find_stream(*environment_, name_, file);
}

std::optional<AcceptedFrame> FileReading::accepted_after_tag_in(FileWindow& file) const {
    constexpr auto kFirstFrames = static_cast<std::int64_t>(FileWindow::kHeadBlock);
    constexpr auto kMaxHeld = static_cast<std::int64_t>(FileWindow::kMaxHeld);
    if (accepted && accepted->position + kFirstFrames <= kMaxHeld) {
        file.expect_at_once(accepted->position + kFirstFrames);
        static_cast<void>(file.view(0, 1));
    }
    return accepted_in(file);
}

FrameWalk FileReading::walk_frames(const FrameVisitor& visit) const {
    if (name_.empty()) {
        return {};
    }
    // Without a whole reading no stream was found because the file could not be read, not because
    // there is none.
    require_whole(kReaderSource);
    return as_reader([&] {
        const auto file = environment_->files.open(name_, OpenMode::Read);
        FileWindow window(*file);
        const std::optional<AcceptedFrame> first = accepted_in(window);
        return first ? FrameWalker(window, audio_end(window), visit).run(first->position)
                     : FrameWalk{};
    });
}

}  // namespace brindle
