// The members of cMP3ID3v2 that take tags off the file.
#include "id3v2/cMP3ID3v2.h"
#include "id3v2/tag_area.h"
#include "util/copy_bytes.h"
#include "util/replace_file.h"
#include "util/skip_errors.h"

namespace brindle {

bool cMP3ID3v2::StripTags(std::int32_t TagsToStrip) {
    bool stripped = false;
    skip_errors([&] { stripped = strip(TagsToStrip); });
    if (stripped) {
        skip_errors([&] { reload(); });
    }
    return stripped;
}

bool cMP3ID3v2::strip(std::int32_t tags) {
    const bool v1 = tags == kStripId3v1 || tags == kStripBoth;
    const bool v2 = tags == kStripId3v2 || tags == kStripBoth;
    if (!v1 && !v2) {
        return true;
    }
    follow_audio(length_of_file());
    if (v1) {
        if (!v1_->Stripv1Tag()) {
            return false;
        }
        known_length_ = length_of_file();
    }
    return !v2 || StripID3v2();
}

// What stands before the first frame of audio goes, without audio the tag alone. False when the
// tag claims more than the file holds and nobody knows where it ends.
bool cMP3ID3v2::StripID3v2() {
    const auto file = environment_.files.open(file_name_, OpenMode::Read);
    FileWindow window(*file);
    const std::optional<OldTag> tag = find_old_tag(window);
    if (!tag) {
        return true;
    }
    const std::int64_t length = window.length();
    const std::optional<std::int64_t> audio = find_tag_area(window, accepted_).audio;
    if (audio == 0) {
        return true;
    }
    const std::int64_t kept_before = audio ? 0 : tag->position;
    const std::int64_t kept_from = audio ? *audio : tag->position + tag->length;
    if (kept_from > length) {
        return false;
    }
    replace_file(environment_.files, file_name_, [&](BinaryFile& new_file) {
        copy_bytes(*file, 0, new_file, 0, kept_before, Owner);
        copy_bytes(*file, kept_from, new_file, kept_before, length - kept_from, Owner);
        file->close();
    });
    return true;
}

std::int64_t cMP3ID3v2::length_of_file() {
    return environment_.files.open(file_name_, OpenMode::Read)->length();
}

void cMP3ID3v2::reload() {
    const String name = file_name_;
    FileName(name);
}

}  // namespace brindle
