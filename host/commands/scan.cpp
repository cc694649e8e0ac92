// brindle scan: one line for each file of a library, and a summary.
#include <memory>
#include <optional>

#include <brindle/cMPEGHeader.h>
#include <brindle/text.h>

#include "batch/batch.h"
#include "batch/file_batch.h"
#include "commands/command_line.h"
#include "commands/scan_summary.h"
#include "output/audio_hash.h"
#include "output/csv.h"
#include "output/file_columns.h"
#include "output/file_json.h"
#include "output/printable_text.h"
#include "output/standard_streams.h"
#include "output/stream_text.h"
#include "system/input_file.h"
#include "system/sha256.h"

namespace brindle::host {

namespace {

struct ScanOptions {
    BatchOptions batch;
    CacheOptions cache;
    bool json = false;
    bool csv = false;
    std::optional<std::string> columns;
    bool hash = false;
    TableForm form;
};

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

// Names have any length, so they come last.
std::string scan_line(const std::string& name, const cMPEGHeader& header,
                      const std::optional<std::string>& hash) {
    constexpr std::size_t kHash = 64;
    constexpr std::size_t kTime = 9;
    constexpr std::size_t kRate = 14;
    constexpr std::size_t kTags = 15;
    std::string time = "-";
    std::string rate = "no stream";
    if (has_stream(header)) {
        time = time_text(header.Duration());
        rate =
            std::to_string(kilobits_per_second(header)) + " kbit/s" + (header.VBR() ? " VBR" : "");
    }
    const std::string beginning =
        hash ? padded(hash->empty() ? "-" : *hash, kHash) + "  " : std::string();
    return beginning + padded(time, kTime) + "  " + padded(rate, kRate) + "  " +
           padded(tag_type_text(header.TagType()), kTags) + "  " + printable(name) + "\n";
}

std::vector<Column> columns_in(const std::string& list) {
    std::vector<Column> columns;
    for (const std::string& title : words_in("--columns", list)) {
        const std::optional<Column> column = column_of(title);
        if (!column) {
            throw UsageError("--columns: unknown column '" + title + "'");
        }
        columns.push_back(*column);
    }
    if (columns.empty()) {
        throw UsageError("--columns: the list is empty");
    }
    return columns;
}

std::vector<Column> columns_for(const ScanOptions& options) {
    std::vector<Column> columns = options.columns ? columns_in(*options.columns) : all_columns();
    if (options.hash) {
        add_hash_column(columns);
    }
    return columns;
}

// All that decides what is printed of a file, the columns last, as they may hold anything.
std::string words_of(const ScanOptions& options) {
    return std::string("scan") + (options.json ? " --json" : "") + (options.csv ? " --csv" : "") +
           (options.hash ? " --hash" : "") + (options.form.spreadsheet ? " --spreadsheet" : "") +
           (options.form.utf8_names ? " --utf8-names" : "") +
           (options.columns ? " --columns " + *options.columns : "");
}

class Scan {
public:
    explicit Scan(const ScanOptions& options)
        : options_(options),
          columns_(columns_for(options)),
          table_(columns_, options.form),
          hashes_(options.hash || has_hash_column(columns_)) {}

    ExitStatus run() {
        if (const auto reason = reason_against_hashing(); hashes_ && reason) {
            write_error("scan --hash: " + *reason);
            return ExitStatus::WrongUsage;
        }
        if (lacks_cache(options_.cache, "scan")) {
            return ExitStatus::WrongUsage;
        }
        CachedBatch batch(options_.batch, options_.cache, words_of(options_));
        if (options_.csv) {
            write_output(table_.csv_header());
        }
        const BatchOutcome outcome =
            batch.run([&](const FoundName& found) { return scan_file(found); },
                      [&](const Counted& counted) { return summary_.add(counted); });
        if (!options_.batch.quiet || outcome.is_interrupted) {
            // Programs expect only facts.
            if (options_.json || options_.csv || options_.columns) {
                write_note(summary_.text(outcome));
            } else {
                write_output(summary_.text(outcome));
            }
        }
        return outcome.status();
    }

private:
    [[nodiscard]] FileResult scan_file(const FoundName& found) const {
        FileResult result;
        Answer& answer = result.answer;
        InputFile file(found);
        answer.error = outcome_of(file, [&] {
            answer.output = text_of(file, hashes_ ? std::optional(audio_hash(file)) : std::nullopt);
            return std::nullopt;
        });
        answer.bytes = file.size();
        if (answer.error) {
            answer.output = text_of_failure(found.name, *answer.error);
        } else {
            result.counted = ScanSummary::counted(file.header());
            result.is_lasting = !file.header().OpeningError();
        }
        return result;
    }

    [[nodiscard]] std::string text_of(InputFile& file,
                                      const std::optional<std::string>& hash) const {
        if (options_.json) {
            return file_json_line(file, FrameValues::LeftOut, hash);
        }
        const TableFile row{file.name(), &file.header(), hash.value_or("")};
        if (options_.csv) {
            return table_.csv_row(row);
        }
        return options_.columns ? table_.line(row) : scan_line(file.name(), file.header(), hash);
    }

    [[nodiscard]] std::string text_of_failure(const std::string& name,
                                              const std::string& reason) const {
        if (options_.json) {
            return failure_json_line(name, reason);
        }
        return options_.csv ? table_.csv_row({.name = name, .error = reason}) : std::string();
    }

    const ScanOptions& options_;
    const std::vector<Column> columns_;
    const FileTable table_;
    const bool hashes_;
    ScanSummary summary_;
};

ExitStatus scan(const ScanOptions& options) {
    if (options.form.spreadsheet && !options.csv) {
        throw UsageError("--spreadsheet is for --csv");
    }
    if (options.form.utf8_names && !options.csv) {
        throw UsageError("--utf8-names is for --csv");
    }
    return Scan(options).run();
}
}  // namespace

void add_scan(CommandLine& program) {
    const auto options = std::make_shared<ScanOptions>();
    CommandOptions command = program.add(
        "scan", "List files and folders, one line per file, with a summary",
        "brindle scan --json /music > library.jsonl", [options] { return scan(*options); });
    command.flag("--json", options->json,
                 "One JSON object per file, on one line, as show prints it, without v2Tag");
    command.flag("--csv", options->csv, "Comma-separated values with a header");
    command.exclusive("--csv", "--json");
    command.text(
        "--columns", "LIST", [options](const std::string& list) { options->columns = list; },
        "These columns, separated by commas: file, error, keys of the JSON object, "
        "audio_sha256, field:NAME. Without --csv one line per file, separated by tabs");
    command.exclusive("--columns", "--json");
    command.flag("--hash", options->hash,
                 "Also print the SHA-256 of the audio, which does not depend on tags");
    command.flag("--spreadsheet", options->form.spreadsheet,
                 "In CSV: a single quote before cells that a spreadsheet takes for a formula");
    command.flag("--utf8-names", options->form.utf8_names,
                 "In CSV: file names as UTF-8, with escapes and a column file_escaped");
    command.cache(options->cache);
    command.batch(options->batch);
}

}  // namespace brindle::host
