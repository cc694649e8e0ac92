#include "journal/undo_file.h"

#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include <brindle/new_content.h>
#include <brindle/text.h>

#include "journal/changed_file.h"
#include "journal/undo_picture.h"
#include "output/printable_text.h"
#include "system/file_access.h"
#include "system/file_guard.h"
#include "system/file_state.h"
#include "system/input_file.h"
#include "system/recorded_name.h"

namespace brindle::host {

namespace {

using Failure = std::optional<std::string>;

std::string size_text(std::int64_t size) {
    return std::to_string(size) + " bytes";
}

// The undoing of one file.
class FileToRestore {
public:
    FileToRestore(const JournalEntry& entry, UndoReport& report)
        : name_(entry.name), before_(entry.before), report_(report) {}

    // Why it is not restored, or nothing. It may already have its old content.
    Failure plan(const JournalEntry& entry, bool dry_run, Journal& journal) {
        if (!is_recorded_name(name_) || !ends_in_mp3_or_mp2(name_)) {
            return "The journal names no MP3 file";
        }
        std::int64_t size = 0;
        if (Failure reason = reason_against_file(name_, size)) {
            return reason;
        }
        if (Failure reason = reason_against_target(entry.target)) {
            return reason;
        }
        if (Failure reason = guard_.acquire(name_)) {
            return reason;
        }
        if (Failure reason = reason_against_reading(name_)) {
            return reason;
        }
        now_ = state_of(name_);
        if (!now_) {
            return "The file is gone";
        }
        const Comparison comparison = compared(name_, now_->size, entry);
        if (comparison.state == StandsAs::Other) {
            return "It has been changed since: " +
                   (now_->size == entry.length_after()
                        ? "other bytes"
                        : size_text(now_->size) + ", not " + size_text(entry.length_after()));
        }
        if (Failure reason = pictures_.plan(entry)) {
            return reason;
        }
        has_old_content_ = comparison.state == StandsAs::Before;
        if (has_old_content_ && pictures_.changes().empty()) {
            return report(UndoOutcome::WasSo, dry_run);
        }
        content_ = has_old_content_ ? unchanged_content(*now_) : comparison.restored;
        if (dry_run) {
            if (Failure reason = reason_against_writing(name_)) {
                return reason;
            }
            journal.count(name_, *now_, content_, pictures_.changes());
            return report(UndoOutcome::Restored, dry_run);
        }
        journal.add(name_, *now_, content_, pictures_.changes());
        is_to_be_written_ = true;
        return std::nullopt;
    }

    [[nodiscard]] bool is_to_be_written() const { return is_to_be_written_; }

    // When the journal of the undo is on the device.
    // The file never lacks a picture that is not beside it.
    Failure write() {
        if (Failure reason = pictures_.write(*now_)) {
            return reason;
        }
        if (has_old_content_) {
            require_same_content(name_, *now_);
        } else if (Failure reason = write_file()) {
            return reason;
        }
        pictures_.remove();
        return report(UndoOutcome::Restored, false);
    }

private:
    Failure write_file() {
        SaveOptions options = guard_.save_options();
        options.before_write = [this](const NewContent&) { require_same_content(name_, *now_); };
        write_content(from_utf8(name_), content_, options);
        if (Failure reason = restore_state(name_, before_)) {
            return "Its content is restored; " + *reason;
        }
        return std::nullopt;
    }

    // A picture that stays is a failure, whose text tells the rest, too.
    Failure report(UndoOutcome outcome, bool dry_run) {
        std::string text = has_old_content_ ? "already has its old content"
                           : dry_run        ? "would be restored, " + size_text(before_.size)
                                            : "restored, " + size_text(before_.size);
        text += pictures_.text(dry_run);
        if (!pictures_.kept_text().empty()) {
            return text + pictures_.kept_text();
        }
        report_ = {outcome, printable(name_) + ": " + text + "\n"};
        return std::nullopt;
    }

    [[nodiscard]] Failure reason_against_target(const std::string& target) const {
        std::error_code error;
        const std::string now = real_name(name_, error);
        if (error) {
            return error.message();
        }
        return now == target ? std::nullopt : Failure("The name now belongs to another file");
    }

    std::string name_;
    FileState before_;
    UndoReport& report_;
    FileGuard guard_;
    std::optional<FileState> now_;
    PicturesToUndo pictures_;
    NewContent content_;
    bool has_old_content_ = false;
    bool is_to_be_written_ = false;
};

}  // namespace

PlannedChange plan_undo(const JournalEntry& entry, bool dry_run, Journal& journal,
                        UndoReport& report) {
    const auto file = std::make_shared<FileToRestore>(entry, report);
    PlannedChange change;
    change.failure = file->plan(entry, dry_run, journal);
    if (file->is_to_be_written()) {
        change.write = [file] { return file->write(); };
    }
    return change;
}

}  // namespace brindle::host
