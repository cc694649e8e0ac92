// The members of cMP3ID3v2 that take tags off the file.
#include "id3v2/cMP3ID3v2.h"
#include "id3v2/cut_file.h"
#include "id3v2/tag_area.h"
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
    if (v1 && v2) {
        // A tag that can't go keeps the record there, too: on false the file is as it was.
        const auto file = environment_.files.open(file_name_, OpenMode::Read);
        FileWindow window(*file);
        trust_or_find_audio(window);
        if (!find_strippable(window, accepted_)) {
            return false;
        }
    }
    if (v1) {
        if (!v1_.Stripv1Tag()) {
            return false;
        }
        // What was stripped is stripped; without a length the audio is looked for again.
        known_length_ = kUnknownLength;
        skip_errors([&] { known_length_ = length_of_file(); });
    }
    return !v2 || StripID3v2();
}

bool cMP3ID3v2::StripID3v2() {
    const auto file = environment_.files.open(file_name_, OpenMode::Read);
    FileWindow window(*file);
    trust_or_find_audio(window);
    const std::optional<Stretch> stripped = find_strippable(window, accepted_);
    if (!stripped) {
        return false;
    }
    if (stripped->length() != 0) {
        replace_file(environment_.files, file_name_, [&](BinaryFile& new_file) {
            CutFile(*file, *stripped)
                .copy_to(new_file, 0, 0, window.length() - stripped->length(), Owner);
            file->close();
        });
    }
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
