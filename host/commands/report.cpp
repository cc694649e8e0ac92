// brindle report: one HTML page about a library.
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "batch/batch.h"
#include "batch/file_batch.h"
#include "commands/check_file.h"
#include "commands/check_json.h"
#include "commands/check_summary.h"
#include "commands/command_line.h"
#include "listen/listening_json.h"
#include "listen/listening_record.h"
#include "listen/suggestions.h"
#include "output/file_json.h"
#include "output/standard_streams.h"
#include "report/report_page.h"
#include "system/file_access.h"
#include "system/input_file.h"
#include "system/new_file.h"

namespace brindle::host {

namespace {

constexpr const char* kStandardOutput = "-";

struct ReportOptions {
    BatchOptions batch;
    CacheOptions cache;
    std::string output;
};

// The page can't be written. It ends the run, since no further file would get into the page.
class PageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Report {
public:
    explicit Report(const ReportOptions& options) : options_(options) {}

    ExitStatus run() {
        if (lacks_cache(options_.cache, "report")) {
            return ExitStatus::WrongUsage;
        }
        try {
            return write_page();
        } catch (const PageError& error) {
            write_error(options_.output, error.what());
            return ExitStatus::SomeFileFailed;
        }
    }

private:
    ExitStatus write_page() {
        BatchOptions files = options_.batch;
        files.write = [this](std::string_view rows) { page_.add(rows); };
        CachedBatch batch(files, options_.cache, "report");
        if (is_file()) {
            create_file();
        }
        page_.begin(options_.batch.paths);
        const BatchOutcome outcome = batch.run(
            [](const FoundName& found) { return report_file(found); },
            [this](const Counted& counted) { return summary_.add(counted); },
            [&batch](const std::string& name, const FileIdentity* identity,
                     const std::string& facts) {
                return report_row(facts, identity ? heard_before(batch, name, *identity) : Json());
            });
        const bool is_unwritten = outcome.is_interrupted && is_file();
        if (!is_unwritten) {
            page_.end(outcome.is_interrupted ? "Interrupted: not all files are in this report."
                                             : "");
            if (is_file()) {
                require(file_.complete());
            }
        }
        if (!options_.batch.quiet || outcome.is_interrupted) {
            write_note(summary_.text(outcome));
        }
        if (is_unwritten) {
            write_error(options_.output, "Not written");
        }
        return outcome.status();
    }

    [[nodiscard]] bool is_file() const { return options_.output != kStandardOutput; }

    // A slip must not cost a recording or any other file.
    void create_file() {
        constexpr std::size_t kBeginning = 64;
        require(outcome_of([&]() -> std::optional<std::string> {
            std::int64_t size = 0;
            if (!reason_against_file(options_.output, size) && size > 0 &&
                !is_report(read_bytes(options_.output, 0, kBeginning))) {
                return "It exists and is not a report";
            }
            return file_.create(options_.output);
        }));
    }

    void write(std::string_view text) {
        if (is_file()) {
            require(file_.append(text));
        } else {
            write_output(text);
        }
    }

    static void require(const std::optional<std::string>& reason) {
        if (reason) {
            throw PageError(*reason);
        }
    }

    // What a run of `listen` with the same cache has heard; null where it has not listened.
    [[nodiscard]] static Json heard_before(CachedBatch& batch, const std::string& name,
                                           const FileIdentity& identity) {
        static const std::string kListen = listening_command(ListenOptions());
        const auto record = batch.record_of(kListen, name, identity);
        const auto heard = record ? listening_in(*record) : std::nullopt;
        return heard ? listening_facts(*heard, kReplayGainReference) : Json();
    }

    [[nodiscard]] static FileResult report_file(const FoundName& found) {
        FileResult result;
        Answer& answer = result.answer;
        InputFile file(found);
        answer.error = outcome_of(file, [&] {
            const auto findings = check_file(file, nullptr);
            result.record = report_facts(found.name, file_json(file, FrameValues::LeftOut),
                                         findings_json(findings));
            result.counted = CheckSummary::counted(findings);
            result.is_lasting = !file.header().OpeningError();
            return std::nullopt;
        });
        answer.bytes = file.size();
        if (answer.error) {
            answer.output = failure_row(found.name, *answer.error);
        }
        return result;
    }

    const ReportOptions& options_;
    CheckSummary summary_;
    NewFile file_;
    ReportPage page_{[this](std::string_view text) { write(text); }};
};

}  // namespace

void add_report(CommandLine& program) {
    const auto options = std::make_shared<ReportOptions>();
    CommandOptions command = program.add(
        "report", "Write one HTML page with totals, plots and a table of all files",
        "brindle report /music -o library.html", [options] { return Report(*options).run(); });
    command.text(
        "-o,--output", "FILE", [options](const std::string& name) { options->output = name; },
        "The page; an older report is replaced. - is standard output");
    command.require("--output");
    command.cache_file(options->cache);
    command.batch(options->batch);
}

}  // namespace brindle::host
