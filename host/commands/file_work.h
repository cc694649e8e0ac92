// What a command does to one file besides setting values.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_edit.h>

#include "journal/journal_entry.h"
#include "system/file_state.h"

namespace brindle::host {

// The answers of its members are why the file fails, or nothing.
class FileWork {
public:
    FileWork() = default;
    FileWork(const FileWork&) = delete;
    FileWork& operator=(const FileWork&) = delete;
    virtual ~FileWork() = default;

    // Before the edit is planned: adds to its options, whose functions are called while it is.
    [[nodiscard]] virtual std::optional<std::string> prepare(const cMPEGHeader& header,
                                                             brindle::EditOptions& options) = 0;
    // After that.
    [[nodiscard]] virtual std::optional<std::string> failure() const = 0;
    // Files beside that before_save() writes.
    [[nodiscard]] virtual std::vector<PictureFile> files_to_write(
        const cMPEGHeader& header) const = 0;
    // Right before the file is changed, also if nothing of it changes.
    [[nodiscard]] virtual std::optional<std::string> before_save(const cMPEGHeader& header,
                                                                 const FileState& state) = 0;
    // A sentence each.
    [[nodiscard]] virtual std::vector<std::string> remarks(bool dry_run) const = 0;
};

}  // namespace brindle::host
