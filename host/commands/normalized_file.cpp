#include "commands/normalized_file.h"

#include <brindle/frame_walk.h>

#include "commands/misread_code_page.h"
#include "commands/repaired_text.h"
#include "output/foreign_tags.h"
#include "output/printable_text.h"
#include "output/save_text.h"
#include "output/stream_text.h"
#include "system/file_access.h"

namespace brindle::host {

namespace {

class NormalizedFile final : public FileWork {
public:
    NormalizedFile(const std::string& name, const NormalizeOptions& options)
        : name_(name), options_(options), pictures_(name, options.pictures) {}

    std::optional<std::string> prepare(const cMPEGHeader& header,
                                       brindle::EditOptions& options) override {
        if (options_.pictures.shrinks) {
            options.new_image = [this](const EditedPicture& picture) {
                return pictures_.new_image(picture);
            };
        }
        if (!options_.code_page.empty()) {
            options.new_text = [this](const TagFrame& frame, const String& value) {
                return repaired(frame, value);
            };
        }
        if (options_.strips_foreign) {
            leave_foreign_tags_out(header, options);
        }
        return pictures_.plan_extraction(header);
    }

    std::optional<std::string> failure() const override { return pictures_.failure(); }

    std::vector<PictureFile> files_to_write(const cMPEGHeader& header) const override {
        return pictures_.files_to_write(header);
    }

    std::optional<std::string> before_save(const cMPEGHeader& header,
                                           const FileState& state) override {
        return pictures_.extract(header, state);
    }

    std::vector<std::string> remarks(bool dry_run) const override {
        std::vector<std::string> remarks = pictures_.remarks(dry_run);
        remarks.insert(remarks.end(), remarks_.begin(), remarks_.end());
        return remarks;
    }

private:
    std::optional<String> repaired(const TagFrame& frame, const String& value) {
        if (!find_misread_encoding(value)) {
            return std::nullopt;
        }
        std::optional<String> text = repaired_text(value, options_.code_page);
        remarks_.push_back(text ? "repaired " + frame_label(frame) + ": " + in_quotes(*text)
                                : "kept " + frame_label(frame) +
                                      " as it is: its text is misread, but not certainly of " +
                                      options_.code_page);
        return text;
    }

    void leave_foreign_tags_out(const cMPEGHeader& header, brindle::EditOptions& options) {
        ReadOnlyFile file(name_);
        std::int64_t size = 0;
        if (reason_against_file(name_, size)) {
            return;  // the edit reports it
        }
        constexpr std::int64_t kRecord = 128;
        std::int64_t end = size - (has_id3v1(header) ? kRecord : 0);
        if (end < size && end >= kRecord && file.read(end - kRecord, 3) == "TAG") {
            end -= kRecord;  // of a second record
        }
        const std::int64_t begin = has_id3v2(header) ? header.ID3TagSizeIncludingHeader() : 0;
        const RemovableTags tags = find_removable_tags(file, begin, end);
        if (!tags.damaged.empty()) {
            remarks_.push_back("kept the " + tags.damaged + " tag, whose parts do not add up");
        }
        if (tags.from == tags.to) {
            return;
        }
        // A last frame that is not whole would end with bytes of the tag.
        const FrameWalk walk = walk_frames(header);
        if (walk.end > tags.from || walk.last_frame_is_cut) {
            remarks_.emplace_back("kept the tags at the end, where an audio frame may be");
            return;
        }
        options.left_out_from = tags.from;
        options.left_out_to = tags.to;
        add_removed("APEv2", tags.ape_bytes);
        add_removed("Lyrics3", tags.lyrics3_bytes);
    }

    void add_removed(const std::string& name, std::int64_t bytes) {
        if (bytes != 0) {
            remarks_.push_back("removed the " + name + " tag (" + std::to_string(bytes) +
                               " bytes)");
        }
    }

    std::string name_;
    const NormalizeOptions& options_;
    NormalizedPictures pictures_;
    std::vector<std::string> remarks_;
};

}  // namespace

std::unique_ptr<FileWork> normalize_file(const std::string& name, const NormalizeOptions& options) {
    return std::make_unique<NormalizedFile>(name, options);
}

}  // namespace brindle::host
