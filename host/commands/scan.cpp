// brindle scan: a line for each file of a library, and a summary.
#include <memory>

#include <brindle/cMPEGHeader.h>
#include <brindle/text.h>

#include "batch/batch.h"
#include "commands/command_line.h"
#include "commands/scan_summary.h"
#include "output/csv.h"
#include "output/file_json.h"
#include "output/printable_text.h"
#include "output/standard_streams.h"
#include "output/stream_text.h"
#include "system/input_file.h"

namespace brindle::host {

namespace {

struct ScanOptions {
    BatchOptions batch;
    bool json = false;
    bool csv = false;
};

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

// Names have any length, so they come last.
std::string scan_line(const std::string& name, const cMPEGHeader& header) {
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
    return padded(time, kTime) + "  " + padded(rate, kRate) + "  " +
           padded(tag_type_text(header.TagType()), kTags) + "  " + printable(name) + "\n";
}

std::string facts_of(const std::string& name, std::int64_t size, const cMPEGHeader& header,
                     const ScanOptions& options) {
    if (options.json) {
        return file_json_line(name, size, header, FrameValues::LeftOut);
    }
    return options.csv ? csv_row(name, header) : scan_line(name, header);
}

std::string failure_of(const std::string& name, const std::string& reason,
                       const ScanOptions& options) {
    if (options.json) {
        return failure_json_line(name, reason);
    }
    return options.csv ? csv_failure(name, reason) : std::string();
}

Answer scan_file(const FoundName& found, const ScanOptions& options, ScanSummary& summary) {
    Answer answer;
    cMPEGHeader header;
    answer.error = found.failure ? found.failure : open_file(header, found.name, answer.bytes);
    if (answer.error) {
        answer.output = failure_of(found.name, *answer.error, options);
    } else {
        answer.output = facts_of(found.name, answer.bytes, header, options);
        summary.add(header);
    }
    return answer;
}

ExitStatus scan(const ScanOptions& options) {
    if (options.csv) {
        write_output(csv_header());
    }
    ScanSummary summary;
    const BatchOutcome outcome = run_batch(
        options.batch, [&](const FoundName& found) { return scan_file(found, options, summary); });
    if (!options.batch.quiet || outcome.is_interrupted) {
        // Programs read nothing but facts.
        if (options.json || options.csv) {
            write_note(summary.text(outcome));
        } else {
            write_output(summary.text(outcome));
        }
    }
    return outcome.status();
}

}  // namespace

void add_scan(CommandLine& program) {
    const auto options = std::make_shared<ScanOptions>();
    CommandOptions command = program.add(
        "scan", "List the files of folders, a line each, and sum them up",
        "brindle scan --json /music > library.jsonl", [options] { return scan(*options); });
    command.flag("--json", options->json,
                 "One JSON object a line and file, as show has it, without v2Tag");
    command.flag("--csv", options->csv, "Comma-separated values, with a header");
    command.exclusive("--csv", "--json");
    command.batch(options->batch);
}

}  // namespace brindle::host
