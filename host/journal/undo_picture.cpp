#include "journal/undo_picture.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "journal/changed_file.h"
#include "journal/journal_format.h"
#include "output/printable_text.h"
#include "pictures/extracted_name.h"
#include "system/created_file.h"
#include "system/error_text.h"
#include "system/file_access.h"
#include "system/file_path.h"
#include "system/recorded_name.h"

namespace brindle::host {

namespace {

using Failure = std::optional<std::string>;

std::string name_in_folder(const std::string& name) {
    return printable(host::name_of(path_of(name).filename()));
}

// A picture beside, as it is now.
struct Found {
    bool is_there = false;
    std::string reason;  // why its bytes are not known; "" where they are
    FileState state;
    JournalBytes bytes;
};

Found find(const std::string& name, std::int64_t length) {
    std::error_code error;
    const auto status = std::filesystem::symlink_status(path_of(name), error);
    if (status.type() == std::filesystem::file_type::not_found) {
        return {};
    }
    Found found;
    found.is_there = true;
    const std::optional<FileState> state = state_of(name);
    if (status.type() != std::filesystem::file_type::regular || !state) {
        found.reason = "it is not a regular file";
    } else if (state->size != length || length > kMaxRecord) {
        found.reason =
            "it has " + std::to_string(state->size) + " bytes, not " + std::to_string(length);
    } else if (Failure reason = reason_against_reading(name)) {
        found.reason = *reason;
    } else {
        try {
            const std::string bytes = read_bytes(name, 0, static_cast<std::size_t>(length));
            found.bytes.assign(bytes.begin(), bytes.end());
            found.state = *state;
        } catch (const Error& fault) {
            found.reason = reason_of(fault);
        }
    }
    return found;
}

}  // namespace

std::string PicturesToUndo::name_of(const PictureFile& change) const {
    return extracted_name(file_, change.number, change.extension);
}

void PicturesToUndo::keep(const std::string& name, const std::string& reason) {
    kept_text_ += "; " + name_in_folder(name) + " stays: " + reason;
}

Failure PicturesToUndo::plan(const JournalEntry& entry) {
    file_ = entry.name;
    if (!entry.pictures.empty() && recorded_name(file_) != file_) {
        return "The journal names a file in another folder";
    }
    for (const PictureFile& picture : entry.pictures) {
        if (Failure reason = plan(picture)) {
            return reason;
        }
    }
    return std::nullopt;
}

Failure PicturesToUndo::plan(const PictureFile& picture) {
    if (!is_extracted_name(picture.number, picture.extension)) {
        return "The journal names no picture of the file";
    }
    const std::string name = name_of(picture);
    const PartMark mark = picture.is_made ? picture.content : mark_of(picture.bytes);
    Found found = find(name, mark.length);
    const bool is_same = found.is_there && found.reason.empty() && mark_of(found.bytes) == mark;
    if (!picture.is_made) {
        if (found.is_there && !is_same) {
            return name_in_folder(name) + " is another file";
        }
        if (!found.is_there) {
            changes_.push_back(picture);
            changes_.back().is_made = true;
        }
    } else if (is_same) {
        PictureFile removed;
        removed.number = picture.number;
        removed.extension = picture.extension;
        removed.bytes = std::move(found.bytes);
        removed.state = std::move(found.state);
        changes_.push_back(std::move(removed));
    } else if (found.is_there) {
        keep(name, found.reason.empty() ? "other bytes than were written" : found.reason);
    }
    return std::nullopt;
}

Failure PicturesToUndo::write(const FileState& like) const {
    for (const PictureFile& change : changes_) {
        if (!change.is_made) {
            continue;
        }
        const std::string name = name_of(change);
        Failure reason = write_new_file(name, change.bytes, like);
        if (!reason) {
            reason = restore_state(name, change.state);
        }
        if (reason) {
            return name_in_folder(name) + " was not written: " + *reason;
        }
    }
    return std::nullopt;
}

void PicturesToUndo::remove() {
    std::erase_if(changes_, [this](const PictureFile& change) {
        if (change.is_made) {
            return false;
        }
        const std::string name = name_of(change);
        const std::optional<FileState> now = state_of(name);
        if (!now || !now->has_same_content(change.state)) {
            keep(name, "it is being changed");
            return true;
        }
        if (const Failure reason = remove_file(name)) {
            keep(name, *reason);
            return true;
        }
        return false;
    });
}

std::string PicturesToUndo::text(bool dry_run) const {
    std::string text;
    for (const PictureFile& change : changes_) {
        const char* const done = change.is_made ? (dry_run ? "would write " : "wrote ")
                                                : (dry_run ? "would remove " : "removed ");
        text += std::string("; ") + done + name_in_folder(name_of(change));
    }
    return text;
}

}  // namespace brindle::host
