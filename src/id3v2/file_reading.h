// What is known of one file: its stream, its ID3v1 record and its tag, as they were read, with what
// was set since.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include <brindle/error.h>
#include <brindle/frame_walk.h>
#include <brindle/values.h>

#include "id3v1/cMP3ID3v1.h"
#include "id3v2/tag_contents.h"
#include "mpeg/audio_start.h"
#include "mpeg/clsMPEG.h"
#include "util/binary_file.h"
#include "util/environment.h"
#include "util/file_window.h"
#include "util/host.h"

namespace brindle {

class FileReading {
public:
    explicit FileReading(Environment& environment);

    [[nodiscard]] Environment& environment() const noexcept { return *environment_; }
    [[nodiscard]] const String& name() const noexcept { return name_; }
    // A model that was never told a name has none.
    [[nodiscard]] bool has_file() const noexcept { return !name_.empty(); }

    // As assigning the name of a file does. Raises only what keeps the file from being opened.
    void open(const String& name, Host* host);
    // The same for a file of that name and content. What fails in reading is kept as fault().
    void read(const String& name, FileWindow& file, Host* host);

    // --- What was found.

    clsMPEG analyser;
    cMP3ID3v1 record;
    [[nodiscard]] TagContents& tag() noexcept { return *tag_; }
    [[nodiscard]] const TagContents& tag() const noexcept { return *tag_; }
    std::int32_t tag_position = 0;  // 1-based, of the version byte; below 1: no tag
    std::int32_t tag_length = 0;    // of the first tag, with its header
    std::int32_t junk_length = 0;   // of a second tag directly after the first
    std::uint8_t tag_version = 0;
    // The analyser's first frame. A save moves it.
    std::optional<AcceptedFrame> accepted;
    // Length of the file that contains it.
    std::int64_t known_length = 0;

    // What keeps the tag from being known, or from being saved, whole: saving it would lose the
    // rest.
    [[nodiscard]] std::optional<Error> fault() const;
    void require_whole(const String& source) const;
    // The same, and error 53 when the name that was told last does not exist.
    [[nodiscard]] std::optional<Error> opening_error() const;

    // --- The current file, which another program may have changed.

    // To be saved. Null when no name was told, and when the file is there no more; error 53 when
    // the name that was told last never existed.
    [[nodiscard]] std::unique_ptr<BinaryFile> open_to_save() const;
    // The same without that error.
    [[nodiscard]] std::unique_ptr<BinaryFile> open_to_look() const;
    // The accepted first frame in the file.
    [[nodiscard]] std::optional<AcceptedFrame> accepted_in(FileWindow& file) const;
    // The same for a caller that reads the tag before it, too: the window then holds both.
    [[nodiscard]] std::optional<AcceptedFrame> accepted_after_tag_in(FileWindow& file) const;
    // All frames.
    [[nodiscard]] FrameWalk walk_frames(const FrameVisitor& visit) const;

private:
    void start_over(Host* host);
    [[nodiscard]] std::unique_ptr<BinaryFile> open_existing(const String& name);
    void keep_name(const String& name);
    void read(FileWindow& file);
    void read_tags(FileWindow& file);
    void mark_corrupt();
    [[nodiscard]] String corrupt_mark() const;

    Environment* environment_;  // never null
    String name_;
    std::unique_ptr<TagContents> tag_;
    std::optional<Error> fault_;
    bool is_missing_ = false;  // the name that was told last does not exist
};

}  // namespace brindle
