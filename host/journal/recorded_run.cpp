#include "journal/recorded_run.h"

#include <filesystem>
#include <system_error>

#include "system/file_path.h"
#include "system/state_folder.h"

namespace brindle::host {

std::string journal_path(const std::string& word) {
    std::error_code error;
    const auto folder = state_folder();
    const bool is_name = !path_of(word).has_parent_path();
    const auto status = std::filesystem::symlink_status(path_of(word), error);
    return is_name && folder && !std::filesystem::exists(status) ? *folder + "/" + word : word;
}

std::optional<std::string> RecordedRun::open(const std::string& path) {
    if (auto reason = file_.open(path)) {
        return reason;
    }
    RecordReader records(file_);
    if (!records.is_journal()) {
        return "Not a journal";
    }
    const std::optional<JournalBytes> first = records.next();
    if (!first) {
        return records.end() == RecordReader::End::Damaged ? "It is damaged" : "It is empty";
    }
    try {
        run_ = read_run(*first);
    } catch (const FieldFault&) {
        return "It is damaged";
    }
    first_entry_ = records.position();
    return std::nullopt;
}

std::size_t RecordedRun::count_entries() {
    RecordReader records(file_, first_entry_);
    std::size_t count = 0;
    while (records.skip()) {
        ++count;
    }
    end_ = records.end();
    return count;
}

std::vector<RecordedRun::Place> RecordedRun::places() {
    RecordReader records(file_, first_entry_);
    std::vector<Place> places;
    end_ = RecordReader::End::Whole;
    while (true) {
        const std::int64_t position = records.position();
        const std::optional<JournalBytes> record = records.next();
        if (!record) {
            end_ = records.end();
            return places;
        }
        try {
            JournalEntry entry = read_entry(*record);
            places.push_back({position, std::move(entry.name), std::move(entry.target)});
        } catch (const FieldFault&) {
            end_ = RecordReader::End::Damaged;
            return places;
        }
    }
}

std::optional<JournalEntry> RecordedRun::entry_at(const Place& place) {
    RecordReader records(file_, place.position);
    const std::optional<JournalBytes> record = records.next();
    if (!record) {
        return std::nullopt;
    }
    try {
        return read_entry(*record);
    } catch (const FieldFault&) {
        return std::nullopt;
    }
}

std::optional<std::string> RecordedRun::fault() const {
    switch (end_) {
        case RecordReader::End::Whole:
            break;
        case RecordReader::End::Torn:
            return "its last entry is incomplete and is ignored";
        case RecordReader::End::Damaged:
            return "it is damaged; what follows the damage cannot be taken back";
    }
    return std::nullopt;
}

}  // namespace brindle::host
