// The file that a save makes, worked out before anything is written.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include <brindle/save_options.h>
#include <brindle/values.h>

#include "id3v1/cMP3ID3v1.h"
#include "id3v2/tag_area.h"
#include "mpeg/audio_start.h"
#include "util/binary_file.h"
#include "util/environment.h"
#include "util/file_content.h"
#include "util/host.h"
#include "util/overwrite_file.h"

namespace brindle {

// The open file with its new ID3v1 record: what the tag's place is looked for in. Both must stay
// where they are.
[[nodiscard]] FileContent with_record(BinaryFile& file, std::int64_t length,
                                      const Id3v1Change& record);

struct SaveLayout {
    // Of the new tag in the new file. Its size is that of its whole area.
    std::int64_t tag_position = 0;
    FileContent tag;
    // The tag's area and all around it are as long as before.
    bool keeps_length = false;
    // How far the audio moves.
    std::int64_t shift = 0;
    FileContent content;

    // Error 6 when the file would be longer than hosts can address.
    void require_addressable() const;
};

// Lays a built tag into `area` of `file`, or in front of what is kept of it.
[[nodiscard]] SaveLayout lay_out(const FileContent& file, const TagArea& area,
                                 const FileContent& tag);

// Error 6, in words.
void require_addressable_length(std::int64_t length);

// Error 6 for a tag whose size its header cannot tell.
void require_tag_length(std::int64_t length);

// Whether hosts find a stream in the file, whose accepted frame is given, and none in the new one.
[[nodiscard]] bool loses_stream(Environment& environment, const String& name,
                                const SaveLayout& layout,
                                const std::optional<AcceptedFrame>& accepted);

// A file that is open for reading and is about to be changed.
struct FileToChange {
    FileSystem& files;
    const String& name;
    BinaryFile& file;
    FileState state;  // when it was opened
    const SaveOptions& options;
    Host* host = nullptr;

    // Tells the host that the file is about to be changed; it may refuse by raising an error.
    void announce(SaveWay way) const;
    // Tells it what the file will be, before anything is written.
    void announce_content(const FileContent& content) const;
};

// Puts `content` in the file's place, and closes the file. Where the content keeps the length of
// the old file and `changes` are all that differ, the new file shares the rest with the old one, if
// the file system can.
void replace_with(const FileToChange& target, const FileContent& content,
                  std::span<const Overwrite> changes = {});

}  // namespace brindle
