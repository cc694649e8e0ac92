// Writes what a reading of a file has become into the file: its tag and its ID3v1 record.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include <brindle/save_options.h>

#include "id3v1/cMP3ID3v1.h"
#include "id3v2/file_reading.h"
#include "id3v2/save_layout.h"
#include "id3v2/tag_area.h"
#include "id3v2/tag_contents.h"
#include "util/binary_file.h"
#include "util/byte_range.h"
#include "util/file_content.h"
#include "util/file_window.h"
#include "util/host.h"
#include "util/overwrite_file.h"

namespace brindle {

class TagWriter {
public:
    // The host is told of each change before it is made, and may refuse it.
    TagWriter(FileReading& reading, Host* host) : reading_(reading), host_(host) {}

    // Nothing where the file is there no more. The reading follows what was written.
    void save(const SaveOptions& options);
    // Takes off the ID3v1 record, the tag or both, in one step and by the file as it stands.
    void strip(std::int32_t tags, const SaveOptions& options);

private:
    void follow_audio(BinaryFile& file, std::int64_t length);
    void find_audio_again(BinaryFile& file);
    [[nodiscard]] TagArea find_area(BinaryFile& file, FileWindow& content);
    void save_directly(const FileToChange& target, const FileContent& old_content,
                       const Id3v1Change& record);
    void save_in_area(const FileToChange& target, const SaveLayout& layout,
                      const Id3v1Change& record, FileWindow& old_content);
    void save_converted(const FileToChange& target, const FileContent& old_content);
    void replace_with_layout(const FileToChange& target, const SaveLayout& layout,
                             std::span<const Overwrite> changes = {});
    void follow(const SaveLayout& layout);

    FileReading& reading_;
    Host* host_;
};

// --- What a save and a strip come to, for plans, too.

// A version 2 tag goes, and of what it held the fields that schedules and lists are made of come
// back.
struct Conversion {
    SaveLayout layout;
    FileReading reading;  // of the file as it will be
};
// Error 5 for a tag that nobody knows the end of.
[[nodiscard]] Conversion convert_version2(const FileReading& reading,
                                          const FileContent& old_content, const TagArea& area);

// The frames of the tag that a save writes.
[[nodiscard]] FrameStore frames_to_save(const FileReading& reading);

// What a strip of these tags takes off a file of that length.
struct StrippedFile {
    ByteRange tag;
    std::int64_t end = 0;  // without the record
    FileContent content;
};
[[nodiscard]] bool strips_record(std::int32_t tags) noexcept;
[[nodiscard]] bool strips_tag(std::int32_t tags) noexcept;
// `area` counts where the tag is to go. Error 5 for a tag that nobody knows the end of.
[[nodiscard]] StrippedFile strip_tags(BinaryFile& file, std::int64_t length, std::int32_t tags,
                                      const TagArea& area);

}  // namespace brindle
