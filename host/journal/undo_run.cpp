#include "journal/undo_run.h"

#include <algorithm>
#include <deque>
#include <filesystem>
#include <iterator>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

#include "batch/grouped_changes.h"
#include "journal/journal_folder.h"
#include "journal/recorded_run.h"
#include "journal/undo_file.h"
#include "output/printable_text.h"
#include "output/standard_streams.h"
#include "pictures/extracted_name.h"
#include "system/file_path.h"
#include "system/interruption.h"
#include "system/recorded_name.h"
#include "system/state_folder.h"
#include "system/utc_text.h"

namespace brindle::host {

namespace {

namespace fs = std::filesystem;
using Place = RecordedRun::Place;

std::string absolute_name(const std::string& name) {
    std::error_code error;
    const fs::path path = fs::absolute(path_of(name), error);
    return error ? name : name_of(path);
}

// "; made song.cover.jpg"
std::string pictures_text(const JournalEntry& entry) {
    std::string text;
    for (const PictureFile& picture : entry.pictures) {
        const fs::path path =
            path_of(extracted_name(entry.name, picture.number, picture.extension));
        text += std::string("; ") + (picture.is_made ? "made " : "removed ") +
                printable(name_of(path.filename()));
    }
    return text;
}

class Undo {
public:
    explicit Undo(const UndoOptions& options) : options_(options) {}

    ExitStatus run() {
        const std::optional<std::string> path = journal();
        if (!path) {
            return ExitStatus::SomeFileFailed;
        }
        path_ = *path;
        if (const auto reason = reason_against_reading()) {
            write_error(path_, *reason);
            return ExitStatus::SomeFileFailed;
        }
        const std::vector<Place> places = wanted(recorded_.places());
        if (const auto fault = recorded_.fault()) {
            write_error(path_, *fault);
            has_failed_ = has_failed_ || !recorded_.is_torn();
        }
        undo(places);
        if (is_interrupted()) {
            write_error("interrupted after " + std::to_string(done_) + " of " +
                        counted(places.size(), "file") + "; run brindle undo " + path_ +
                        " to continue");
            return interrupted_status();
        }
        return has_failed_ || failed_ > 0 ? ExitStatus::SomeFileFailed : ExitStatus::AllFine;
    }

private:
    std::optional<std::string> journal() {
        if (!options_.journal.empty()) {
            return journal_path(options_.journal);
        }
        const auto folder = state_folder();
        const auto journals = folder ? journals_in(*folder) : std::vector<std::string>();
        if (journals.empty()) {
            write_error(folder.value_or(kStateVariable), "There is no journal");
            return std::nullopt;
        }
        return journals.back();
    }

    std::optional<std::string> reason_against_reading() {
        if (auto reason = recorded_.open(path_)) {
            return reason;
        }
        if (recorded_.goes_on()) {
            return "Its run is still going on";
        }
        return std::nullopt;
    }

    // The last change first.
    std::vector<Place> wanted(std::vector<Place> places) {
        std::reverse(places.begin(), places.end());
        if (options_.files.empty()) {
            return places;
        }
        std::set<std::string> names;
        for (const std::string& file : options_.files) {
            const std::string name = recorded_name(file).value_or(file);
            names.insert(name);
            if (std::none_of(places.begin(), places.end(),
                             [&](const Place& place) { return place.name == name; })) {
                write_error(file, "The journal has no such file");
                has_failed_ = true;
            }
        }
        std::erase_if(places, [&](const Place& place) { return !names.contains(place.name); });
        return places;
    }

    void undo(const std::vector<Place>& places) {
        watch_for_interruption(SecondSignal::Ignored);
        Journal kept(options_.kept, "undo", absolute_name(path_));
        // Of the files of a group, in their order.
        std::deque<UndoReport> reports;
        const auto done = [&](const std::string& name, const std::optional<std::string>& failure) {
            const UndoReport report = std::move(reports.front());
            reports.pop_front();
            ++done_;
            if (failure) {
                ++failed_;
                write_error(name, *failure);
                return;
            }
            (report.outcome == UndoOutcome::WasSo ? was_so_ : restored_) += 1;
            write_output(report.line);
        };
        GroupedChanges changes(options_.dry_run ? GroupRules() : journal_groups(kept), done);
        std::set<std::string> seen;
        for (const Place& place : places) {
            if (is_interrupted()) {
                break;
            }
            // The changes before the last one can be checked after that one has been undone.
            if (options_.dry_run && !seen.insert(place.target).second) {
                continue;
            }
            changes.add(place.name, [&](const std::string&) -> PlannedChange {
                UndoReport& report = reports.emplace_back();
                const std::optional<JournalEntry> entry = recorded_.entry_at(place);
                if (!entry) {
                    return {"Its entry in the journal is damaged"};
                }
                return plan_undo(*entry, options_.dry_run, kept, report);
            });
        }
        changes.write();
        write_output(summary() + "\n");
        if (options_.dry_run) {
            write_note(journal_size_text(kept));
        }
    }

    [[nodiscard]] std::string summary() const {
        return counted(restored_, "file") +
               (options_.dry_run ? " would be restored, " : " restored, ") +
               std::to_string(was_so_) + " unchanged, " + std::to_string(failed_) +
               " failed: " + recorded_.run().command + " of " + utc_text(recorded_.run().started);
    }

    const UndoOptions& options_;
    std::string path_;
    RecordedRun recorded_;
    std::size_t done_ = 0;
    std::size_t restored_ = 0;
    std::size_t was_so_ = 0;
    std::size_t failed_ = 0;
    bool has_failed_ = false;
};

}  // namespace

ExitStatus undo_run(const UndoOptions& options) {
    return Undo(options).run();
}

ExitStatus list_journals() {
    const auto folder = state_folder();
    ExitStatus status = ExitStatus::AllFine;
    for (const std::string& path : folder ? journals_in(*folder) : std::vector<std::string>()) {
        RecordedRun recorded;
        if (const auto reason = recorded.open(path)) {
            write_error(path, *reason);
            status = ExitStatus::SomeFileFailed;
            continue;
        }
        write_output(utc_text(recorded.run().started) + "  " + printable(recorded.run().command) +
                     "  " + counted(recorded.count_entries(), "file") + "  " +
                     std::to_string(recorded.size()) + " bytes  " + printable(path) + "\n");
    }
    return status;
}

ExitStatus list_journal(const std::string& journal) {
    const std::string path = journal_path(journal);
    RecordedRun recorded;
    if (const auto reason = recorded.open(path)) {
        write_error(path, *reason);
        return ExitStatus::SomeFileFailed;
    }
    const std::vector<Place> places = recorded.places();
    write_output(utc_text(recorded.run().started) + "  " + printable(recorded.run().command) +
                 (recorded.run().undone.empty() ? "" : " of " + printable(recorded.run().undone)) +
                 "  " + counted(places.size(), "file") + "\n");
    for (const Place& place : places) {
        if (const auto entry = recorded.entry_at(place)) {
            write_output(printable(place.name) + ": " + std::to_string(entry->length_before()) +
                         " bytes before, " + std::to_string(entry->length_after()) + " after" +
                         pictures_text(*entry) + "\n");
        }
    }
    if (const auto fault = recorded.fault()) {
        write_error(path, *fault);
        return recorded.is_torn() ? ExitStatus::AllFine : ExitStatus::SomeFileFailed;
    }
    return ExitStatus::AllFine;
}

}  // namespace brindle::host
