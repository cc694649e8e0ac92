// Takes back what one change did to pictures beside its file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "journal/journal_entry.h"
#include "system/file_state.h"

namespace brindle::host {

// Pictures that the change made are removed, if they are regular files of the same bytes; those
// that it removed are written again. Other answers than texts are why nothing may be restored, or
// nothing.
class PicturesToUndo {
public:
    // Of the entry's file, which is restored together with them.
    [[nodiscard]] std::optional<std::string> plan(const JournalEntry& entry);

    // What is left to do, as a change of its own.
    [[nodiscard]] const std::vector<PictureFile>& changes() const { return changes_; }

    // Before the file is restored. Others get no more rights than in a file of the state `like`.
    [[nodiscard]] std::optional<std::string> write(const FileState& like) const;
    // After it.
    void remove();

    // "; removed song.cover.jpg"
    [[nodiscard]] std::string text(bool dry_run) const;
    // "; song.cover.jpg stays: ...", for those that are not removed
    [[nodiscard]] const std::string& kept_text() const { return kept_text_; }

private:
    [[nodiscard]] std::optional<std::string> plan(const PictureFile& picture);
    void keep(const std::string& name, const std::string& reason);
    [[nodiscard]] std::string name_of(const PictureFile& change) const;

    std::string file_;
    std::vector<PictureFile> changes_;
    std::string kept_text_;
};

}  // namespace brindle::host
