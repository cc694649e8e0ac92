// brindle listen: loudness, where sound begins and ends, cue points.
#include <memory>
#include <string>

#include <brindle/cMPEGHeader.h>
#include <brindle/error.h>

#include "batch/batch.h"
#include "commands/command_line.h"
#include "listen/listen_to_file.h"
#include "listen/listening_csv.h"
#include "listen/listening_json.h"
#include "listen/listening_text.h"
#include "listen/replay_gain.h"
#include "output/file_json.h"
#include "output/printable_text.h"
#include "output/standard_streams.h"
#include "system/input_file.h"

namespace brindle::host {

namespace {

struct ListenCommand {
    BatchOptions batch;
    ListenOptions listening;
    bool json = false;
    bool csv = false;
    double reference = kReplayGainReference;
};

std::string text_of(const std::string& name, const Listening& heard,
                    const std::optional<std::string>& error, const ListenCommand& options) {
    if (options.json) {
        return listening_json_line(name, heard, options.reference, error);
    }
    if (options.csv) {
        return listening_csv_row(name, heard, error.value_or(""));
    }
    return printable(name) + ": " + listening_text(heard, options.reference) + "\n";
}

std::string text_of_failure(const std::string& name, const std::string& error,
                            const ListenCommand& options) {
    if (options.json) {
        return failure_json_line(name, error);
    }
    return options.csv ? listening_csv_failure(name, error) : std::string();
}

Answer listen_to(const FoundName& found, const ListenCommand& options) {
    Answer answer;
    cMPEGHeader header;
    answer.error = found.failure ? found.failure : open_file(header, found.name, answer.bytes);
    if (!answer.error) {
        try {
            const auto heard = listen_to_file(header, answer.bytes, options.listening);
            if (heard) {
                answer.error = failure_of(*heard);
                answer.output = text_of(found.name, *heard, answer.error, options);
                return answer;
            }
            answer.error = "no MPEG audio found";
        } catch (const Error& error) {
            answer.error = error.what();
        }
    }
    answer.output = text_of_failure(found.name, *answer.error, options);
    return answer;
}

ExitStatus listen(const ListenCommand& options) {
    if (const auto reason = reason_against_listening()) {
        write_error("listen: " + *reason);
        return ExitStatus::WrongUsage;
    }
    if (options.csv) {
        write_output(listening_csv_header());
    }
    const BatchOutcome outcome =
        run_batch(options.batch, [&](const FoundName& found) { return listen_to(found, options); });
    if (!options.batch.quiet || outcome.is_interrupted) {
        const std::string summary =
            outcome.files_text() + ": " + std::to_string(outcome.failures) + " failed\n";
        // Programs read nothing but facts.
        options.json || options.csv ? write_note(summary) : write_output(summary);
    }
    return outcome.status();
}

}  // namespace

void add_listen(CommandLine& program) {
    const auto options = std::make_shared<ListenCommand>();
    CommandOptions command = program.add(
        "listen", "Measure loudness, find where sound begins and ends, suggest cue points",
        "brindle listen --csv /music/new > points.csv", [options] { return listen(*options); });
    command.flag("--json", options->json, "One JSON object a line and file");
    command.flag("--csv", options->csv,
                 "Comma-separated values, with a header: the points that are suggested");
    command.exclusive("--csv", "--json");
    command.flag("--quick", options->listening.quick,
                 "Listen to the first and the last minute of each file only");
    constexpr double kMaxUnits = 80;
    command.number("--reference", "LUFS", options->reference, -70, 0,
                   "Show gains that bring files to this loudness; -18 otherwise");
    command.number("--sound-range", "LU", options->listening.sound_range, 1, kMaxUnits,
                   "So far below the file's loudness there is still sound; 40 otherwise");
    command.number("--overlap-range", "LU", options->listening.overlap_range, 1, kMaxUnits,
                   "So far below the file's loudness the next may begin; 12 otherwise");
    command.batch(options->batch);
}

}  // namespace brindle::host
