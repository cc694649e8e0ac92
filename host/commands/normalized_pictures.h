// What `brindle normalize --pictures` does to the pictures of one file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_edit.h>

#include "journal/journal_entry.h"
#include "system/file_state.h"

namespace brindle::host {

struct PictureOptions {
    bool shrinks = false;
    bool extracts = false;
    bool drops = false;
};

// A shrunk or dropped picture must be extracted if pictures are to be. Answers are why the file
// fails, or nothing.
class NormalizedPictures {
public:
    NormalizedPictures(std::string file, const PictureOptions& options);

    // Finds the names of the files to write.
    [[nodiscard]] std::optional<std::string> plan_extraction(const cMPEGHeader& header);
    // Called for the pictures that stay, in their order.
    [[nodiscard]] std::optional<NewImage> new_image(const EditedPicture& picture);
    [[nodiscard]] const std::optional<std::string>& failure() const { return failure_; }
    // The files that extract() writes, for the journal.
    [[nodiscard]] std::vector<PictureFile> files_to_write(const cMPEGHeader& header) const;
    // Writes these files.
    [[nodiscard]] std::optional<std::string> extract(const cMPEGHeader& header,
                                                     const FileState& state) const;
    [[nodiscard]] std::vector<std::string> remarks(bool dry_run) const;

private:
    // The file to write for one picture.
    struct Extraction {
        std::int64_t number = 0;  // 0: there is none to write
        std::string extension;
        std::string why_not;
    };

    [[nodiscard]] std::string file_name_of(const Extraction& extraction) const;
    [[nodiscard]] Extraction extraction_of(const EditedPicture& picture) const;
    void visit_extracted(
        const cMPEGHeader& header,
        const std::function<void(const Extraction&, const EditedPicture&)>& visit) const;
    [[nodiscard]] std::optional<std::vector<std::uint8_t>> shrunk(const EditedPicture& picture);
    void keep(const EditedPicture& picture, const std::string& reason);

    std::string file_;
    PictureOptions options_;
    std::vector<Extraction> extractions_;  // of each picture
    std::vector<std::string> extensions_;
    std::size_t seen_ = 0;  // by new_image()
    std::optional<std::string> failure_;
    std::vector<std::string> remarks_;
};

}  // namespace brindle::host
