// An edit of one file: worked out first, written then.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <brindle/new_content.h>
#include <brindle/save_options.h>
#include <brindle/tag_edit.h>
#include <brindle/tag_facts.h>
#include <brindle/values.h>

#include "id3v1/cMP3ID3v1.h"
#include "id3v2/field_frame.h"
#include "id3v2/save_layout.h"
#include "mpeg/audio_start.h"
#include "util/binary_file.h"
#include "util/environment.h"
#include "util/file_content.h"
#include "util/file_window.h"
#include "util/host.h"

namespace brindle {

// A file that is open for reading, and what is known of it.
struct FileToEdit {
    Environment& environment;
    String name;
    Host* host = nullptr;
    std::unique_ptr<BinaryFile> file;
    FileState state;
};

// Finds the stream's accepted frame in the current file.
using FindAccepted = std::function<std::optional<AcceptedFrame>(FileWindow& file)>;

class FileEdit {
public:
    // Without fields, and without any frame to remove, the tag stays as it is. `record` is written
    // where the host has set some of it.
    FileEdit(FileToEdit file, const FindAccepted& find_accepted, const cMP3ID3v1& record,
             std::vector<EditedField> fields, EditOptions options);

    [[nodiscard]] const String& name() const noexcept { return subject_.name; }
    [[nodiscard]] const EditPlan& plan() const noexcept { return plan_; }
    // The file as it will be. Its bytes are read from the old one, as long as this object lives.
    [[nodiscard]] const FileContent& content() const noexcept { return layout_.content; }
    // The same for the caller of the library.
    [[nodiscard]] NewContent new_content() const;
    // What the tag will say by the public documents.
    [[nodiscard]] TagFacts facts() const;
    void save(const SaveOptions& options);

private:
    // New bytes of the tag's place, where they differ.
    struct Patch {
        std::int64_t offset = 0;
        std::vector<std::uint8_t> bytes;
        std::vector<std::uint8_t> old_bytes;
    };

    void plan_record(const cMP3ID3v1& record);
    [[nodiscard]] bool leaves_bytes_out() const noexcept {
        return options_.left_out_from < options_.left_out_to;
    }
    void leave_bytes_out();
    // When bytes after the audio are left out.
    [[nodiscard]] bool loses_stream_at_end(const FindAccepted& find_accepted) const;
    void plan_tag(const FindAccepted& find_accepted);
    // Without a field that was set: whether there is anything to remove or to convert.
    [[nodiscard]] bool has_work(FileWindow& window, const ByteRange& old_tag) const;
    void lay_out_tag(const std::optional<ByteRange>& old_tag, const FileContent& tag);
    // Nothing where too much would have to be held in memory.
    [[nodiscard]] std::optional<std::vector<Patch>> patches_in_place() const;
    [[nodiscard]] std::vector<Overwrite> overwrites() const;

    FileToEdit subject_;
    std::vector<EditedField> fields_;
    EditOptions options_;
    bool sets_nothing_ = false;
    EditPlan plan_;
    Id3v1Change record_;
    FileContent old_content_;  // with the new record, without the bytes that are left out
    SaveLayout layout_;
    std::optional<std::vector<Patch>> patches_ = std::vector<Patch>();
};

}  // namespace brindle
