// brindle apply: the edits of a table, one row per file.
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <brindle/cMPEGHeader.h>

#include "batch/batch.h"
#include "batch/file_batch.h"
#include "commands/command_line.h"
#include "commands/edit_table.h"
#include "commands/row_edits.h"
#include "commands/set_file.h"
#include "output/printable_text.h"
#include "output/standard_streams.h"
#include "system/file_access.h"
#include "system/file_state.h"
#include "system/input_file.h"
#include "system/interruption.h"
#include "system/process.h"

namespace brindle::host {

namespace {

struct ApplyOptions {
    std::string edits;
    bool dry_run = false;
    bool keep_going = false;
    bool unicode = false;
    bool spreadsheet = false;
    JournalOptions journal;
};

// Standard input to its end. The answer is why it could not be read, or nothing.
std::optional<std::string> read_all_input(std::string& text) {
    constexpr std::size_t kBlock = std::size_t{64} * 1024;
    std::string block;
    while (true) {
        if (auto reason = read_input(block, kBlock)) {
            return reason;
        }
        if (block.empty()) {
            return std::nullopt;
        }
        text += block;
    }
}

std::optional<std::string> read_whole_file(const std::string& name, std::string& text) {
    std::int64_t size = 0;
    if (auto reason = reason_against_file(name, size)) {
        return reason;
    }
    if (auto reason = reason_against_reading(name)) {
        return reason;
    }
    text = read_bytes(name, 0, static_cast<std::size_t>(size));
    if (text.size() != static_cast<std::size_t>(size)) {
        return "The file was shortened while it was read";
    }
    return std::nullopt;
}

// A row in progress.
struct RowTask {
    explicit RowTask(const EditRow& edits) : row(edits) {
        // As a path it would mean standard input.
        name = row.file == kStandardInput ? "./-" : row.file;
    }

    const EditRow& row;
    std::string name;
    std::vector<std::string> errors;
    SetOptions changes;
};

class Application {
public:
    Application(const ApplyOptions& options, EditTable table)
        : options_(options), table_(std::move(table)), journal_(options.journal, "apply") {
        for (const std::string& column : table_.columns) {
            if (!is_edit_column(column)) {
                table_.errors.push_back({{}, "column " + printable(column) + ": unknown column"});
                table_.is_readable = false;
            }
        }
        tasks_.reserve(table_.rows.size());
        for (const EditRow& row : table_.rows) {
            tasks_.emplace_back(row);
        }
    }

    ExitStatus run() {
        find_files();
        if (table_.is_readable) {
            validate();
            if (is_interrupted()) {
                write_error("interrupted, nothing was written");
                return interrupted_status();
            }
        }
        write_errors();
        if (options_.dry_run) {
            if (!has_errors_ || options_.keep_going) {
                write_note(journal_size_text(journal_));
            }
            return has_errors_ ? ExitStatus::SomeFileFailed : ExitStatus::AllFine;
        }
        if (!table_.is_readable || (has_errors_ && !options_.keep_going)) {
            write_error("nothing was written");
            return ExitStatus::SomeFileFailed;
        }
        return write_files();
    }

private:
    // Two rows of one file would change each other's result.
    void find_files() {
        std::map<std::pair<std::uint64_t, std::uint64_t>, RowTask*> known;
        for (RowTask& task : tasks_) {
            std::int64_t size = 0;
            if (const auto reason = reason_against_file(task.name, size)) {
                task.errors.push_back("column file: " + printable(task.name) + ": " + *reason);
                continue;
            }
            const std::optional<FileState> state = state_of(task.name);
            if (!state) {
                task.errors.push_back("column file: " + printable(task.name) + " is gone");
                continue;
            }
            const auto [place, is_first] = known.try_emplace({state->volume, state->number}, &task);
            if (!is_first) {
                RowTask& first = *place->second;
                task.errors.push_back(same_file_text(first));
                first.errors.push_back(same_file_text(task));
            }
        }
    }

    [[nodiscard]] static std::string same_file_text(const RowTask& other) {
        return "column file: the same file as in " + other.row.place.text();
    }

    [[nodiscard]] BatchOutcome run_tasks(bool changes_files,
                                         const std::function<bool(const RowTask&)>& is_wanted,
                                         const std::function<Answer(RowTask&)>& job) {
        BatchOptions batch;
        batch.changes_files = changes_files;
        std::map<std::string, RowTask*> by_name;
        for (RowTask& task : tasks_) {
            if (is_wanted(task)) {
                batch.paths.push_back(task.name);
                by_name.emplace(task.name, &task);
            }
        }
        if (changes_files && journal_.is_kept()) {
            // Threads wait for a flush of the journal together.
            batch.jobs = static_cast<unsigned>(
                std::clamp<std::size_t>(batch.paths.size(), 1, kMaxJournalGroup));
        }
        return run_batch(batch, [&](const FoundName& found) {
            const auto task = by_name.find(found.name);
            // A folder has taken the file's place.
            return task == by_name.end() ? Answer{"", found.failure.value_or("Not in the table")}
                                         : job(*task->second);
        });
    }

    void validate() {
        static_cast<void>(run_tasks(
            false, [](const RowTask& task) { return task.errors.empty(); },
            [this](RowTask& task) {
                Answer answer;
                const auto check = [&] { return reason_against(task, answer); };
                if (const auto reason = outcome_of(check)) {
                    task.errors.push_back(printable(task.name) + ": " + *reason);
                }
                return answer;
            }));
    }

    // Called on several threads, each with its own task.
    [[nodiscard]] std::optional<std::string> reason_against(RowTask& task, Answer& answer) const {
        cMPEGHeader header;
        if (auto reason = open_file(header, task.name, answer.bytes)) {
            return reason;
        }
        RowEdits row = edits_of(task.row, header, options_.unicode);
        task.errors = std::move(row.errors);
        if (!task.errors.empty() || row.edits.empty()) {
            return std::nullopt;
        }
        task.changes = changes_of(std::move(row), options_.unicode);
        SetOptions trial = task.changes;
        trial.dry_run = true;
        SetReport report;
        auto reason =
            set_with_editor(task.name, trial, report, options_.dry_run ? journal_ : no_journal_);
        if (options_.dry_run && !reason) {
            answer.output = report.lines;
        }
        return reason;
    }

    // In the order of the rows.
    void write_errors() {
        std::vector<TableError> errors = table_.errors;
        for (const RowTask& task : tasks_) {
            for (const std::string& error : task.errors) {
                errors.push_back({task.row.place, error});
            }
        }
        std::stable_sort(errors.begin(), errors.end(),
                         [](const TableError& one, const TableError& other) {
                             return one.place.row < other.place.row;
                         });
        const std::string table =
            options_.edits == kStandardInput ? "standard input" : options_.edits;
        for (const TableError& error : errors) {
            // A cell may contain line ends.
            write_error(table, printable(error.place.text() + ", " + error.text));
        }
        has_errors_ = !errors.empty();
    }

    ExitStatus write_files() {
        const auto is_wanted = [](const RowTask& task) {
            return task.errors.empty() && !task.changes.edits.empty();
        };
        std::atomic<std::size_t> written = 0;
        const BatchOutcome outcome = run_tasks(true, is_wanted, [&](RowTask& task) {
            Answer answer;
            SetReport report;
            answer.error = outcome_of(
                [&] { return set_with_editor(task.name, task.changes, report, journal_); });
            answer.output = report.lines;
            written += report.is_written && !answer.error ? 1 : 0;
            return answer;
        });
        const auto wanted =
            static_cast<std::size_t>(std::count_if(tasks_.begin(), tasks_.end(), is_wanted));
        const auto done = static_cast<std::size_t>(outcome.files);
        if (done < wanted) {
            write_error("interrupted after " + std::to_string(done) + " of " +
                        counted(wanted, "file") + ", " + std::to_string(outcome.failures) +
                        " failed; run the same command again to continue");
            return interrupted_status();
        }
        const std::size_t rows = table_.rows.size() + table_.errors.size();
        const auto left_out =
            table_.errors.size() + static_cast<std::size_t>(std::count_if(
                                       tasks_.begin(), tasks_.end(),
                                       [](const RowTask& task) { return !task.errors.empty(); }));
        const auto failed = static_cast<std::size_t>(outcome.failures);
        write_output(counted(rows, "row") + ": " + std::to_string(written) + " written, " +
                     std::to_string(rows - left_out - failed - written) + " unchanged, " +
                     std::to_string(failed) + " failed, " + std::to_string(left_out) +
                     " left out\n");
        return has_errors_ ? ExitStatus::SomeFileFailed : outcome.status();
    }

    const ApplyOptions& options_;
    EditTable table_;
    std::vector<RowTask> tasks_;
    mutable Journal journal_;
    mutable Journal no_journal_{JournalOptions{.none = true}, ""};
    bool has_errors_ = false;
};

ExitStatus apply(const ApplyOptions& options) {
    std::string text;
    const bool is_input = options.edits == kStandardInput;
    const auto reason = is_input ? read_all_input(text)
                                 : outcome_of([&] { return read_whole_file(options.edits, text); });
    if (reason) {
        write_error(is_input ? "standard input" : options.edits, *reason);
        return ExitStatus::SomeFileFailed;
    }
    return Application(options, read_edits(text, options.spreadsheet)).run();
}

}  // namespace

void add_apply(CommandLine& program) {
    const auto options = std::make_shared<ApplyOptions>();
    CommandOptions command =
        program.add("apply", "Set values from a table, one row per file: CSV or JSON lines",
                    "brindle apply --dry-run edits.csv", [options] { return apply(*options); });
    command.flag("--dry-run", options->dry_run,
                 "Show old and new values and what a save would do; write nothing");
    command.flag("--keep-going", options->keep_going,
                 "Write the rows without errors even if other rows have errors");
    command.flag("--unicode", options->unicode,
                 "Write text outside the code page of hosts as UTF-16, which other "
                 "programs read");
    command.flag("--spreadsheet", options->spreadsheet,
                 "In CSV: remove the single quote that scan --spreadsheet puts before cells");
    command.journal(options->journal);
    command.operand(
        "EDITS", [options](const std::string& name) { options->edits = name; },
        "The table, or - for standard input. Its columns: file, remove, options of set without "
        "dashes, field:NAME, and what scan --csv and scan --json print");
}

}  // namespace brindle::host
