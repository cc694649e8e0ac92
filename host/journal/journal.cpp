#include "journal/journal.h"

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <utility>

#include "journal/changed_file.h"
#include "journal/journal_entry.h"
#include "journal/journal_format.h"
#include "system/file_path.h"
#include "system/private_file.h"
#include "system/state_folder.h"

namespace brindle::host {

namespace {

constexpr char kHelp[] = "; --no-journal does without one";

std::int64_t seconds_now() {
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

[[noreturn]] void refuse(const std::string& place, const std::string& reason) {
    throw JournalError("no journal can be kept: " + place + ": " + reason +
                       "; nothing was changed" + kHelp);
}

}  // namespace

std::optional<std::string> reason_against_journals() {
    return std::nullopt;
}

struct Journal::State {
    JournalOptions options;
    JournalRun run;

    PrivateFile file;
    std::string name;          // of the file, on the thread that flushes
    mutable std::mutex mutex;  // guards all below
    std::condition_variable flushed;
    JournalBytes pending;
    std::uint64_t added = 0;      // entries
    std::uint64_t on_device = 0;  // of them
    std::int64_t size = 0;
    bool is_flushing = false;
    std::optional<std::string> failure;

    // On the thread that flushes, without the lock.
    void create() {
        std::string place;
        if (options.file) {
            place = *options.file;
        } else {
            const std::optional<std::string> folder = state_folder();
            if (!folder) {
                refuse("the home folder", std::string(kStateVariable) + " is not set");
            }
            if (const auto reason = make_private_folder(*folder)) {
                refuse(*folder, *reason);
            }
            remove_old_journals(*folder, options.limits);
            place = *folder + "/" + new_journal_name();
        }
        if (const auto reason = file.create(place)) {
            refuse(place, *reason);
        }
        name = place;
        JournalBytes beginning = journal_beginning();
        const JournalBytes record = packed_record(bytes_of(run));
        beginning.insert(beginning.end(), record.begin(), record.end());
        auto reason = file.append(beginning);
        if (!reason) {
            reason = flush_name(place);
        }
        if (reason) {
            remove_and_refuse(*reason);
        }
    }

    // No change has been made that the file could undo.
    [[noreturn]] void remove_and_refuse(const std::string& reason) {
        file.close();
        std::error_code error;
        std::filesystem::remove(path_of(name), error);
        refuse(name, reason);
    }

    void write(const JournalBytes& bytes) {
        const bool is_first = !file.is_open();
        if (is_first) {
            create();
        }
        auto reason = file.append(bytes);
        if (!reason) {
            reason = file.flush();
        }
        if (reason && is_first) {
            remove_and_refuse(*reason);
        }
        if (reason) {
            throw JournalError("the journal " + name + " cannot be written: " + *reason +
                               "; the remaining files were not changed" + kHelp);
        }
    }
};

Journal::Journal(const JournalOptions& options, std::string command, std::string undone)
    : state_(std::make_unique<State>()) {
    state_->options = options;
    state_->run = {std::move(command), seconds_now(), std::move(undone)};
}

Journal::~Journal() = default;

bool Journal::is_kept() const {
    return !state_->options.none;
}

void Journal::add(const std::string& name, const FileState& before, const NewContent& content,
                  const std::vector<PictureFile>& pictures) {
    if (!is_kept()) {
        return;
    }
    const JournalBytes record =
        packed_record(bytes_of(entry_of(name, before, content, pictures, Hashing::Done)));
    const std::unique_lock lock(state_->mutex);
    state_->pending.insert(state_->pending.end(), record.begin(), record.end());
    state_->size += static_cast<std::int64_t>(record.size());
    ++state_->added;
}

void Journal::count(const std::string& name, const FileState& before, const NewContent& content,
                    const std::vector<PictureFile>& pictures) {
    if (!is_kept()) {
        return;
    }
    const auto size = static_cast<std::int64_t>(
        packed_record(bytes_of(entry_of(name, before, content, pictures, Hashing::LeftOut)))
            .size());
    const auto beginning = static_cast<std::int64_t>(journal_beginning().size() +
                                                     packed_record(bytes_of(state_->run)).size());
    const std::unique_lock lock(state_->mutex);
    state_->size += size + (state_->added == 0 ? beginning : 0);
    ++state_->added;
}

void Journal::flush() {
    if (!is_kept()) {
        return;
    }
    State& state = *state_;
    std::unique_lock lock(state.mutex);
    const std::uint64_t wanted = state.added;
    while (state.on_device < wanted) {
        if (state.failure) {
            throw JournalError(*state.failure);
        }
        if (state.is_flushing) {
            state.flushed.wait(lock);
            continue;
        }
        state.is_flushing = true;
        const JournalBytes bytes = std::exchange(state.pending, {});
        const std::uint64_t covered = state.added;
        lock.unlock();
        std::optional<std::string> failure;
        try {
            state.write(bytes);
        } catch (const std::exception& error) {
            failure = error.what();
        }
        lock.lock();
        state.is_flushing = false;
        state.failure = failure;
        state.on_device = failure ? state.on_device : covered;
        state.flushed.notify_all();
    }
}

bool Journal::is_full() const {
    const std::unique_lock lock(state_->mutex);
    return static_cast<std::int64_t>(state_->pending.size()) >= kMaxPendingBytes;
}

std::int64_t Journal::size() const {
    const std::unique_lock lock(state_->mutex);
    return state_->size;
}

}  // namespace brindle::host
