// brindle show: stream, tags and fields of each file.
#include <memory>
#include <optional>
#include <string>

#include "batch/file_batch.h"
#include "batch/name_source.h"
#include "commands/command_line.h"
#include "output/file_json.h"
#include "output/file_report.h"
#include "output/standard_streams.h"
#include "system/input_file.h"

namespace brindle::host {

namespace {

struct ShowOptions : PathOptions {
    bool json = false;
};

ExitStatus show(const ShowOptions& options) {
    ExitStatus status = ExitStatus::AllFine;
    bool blank_line = false;
    const PathOptions& paths = options;
    NameSource names(paths);
    while (const std::optional<FoundName> found = names.next()) {
        const std::string& name = found->name;
        InputFile file(*found);
        std::string text;
        const auto reason = outcome_of(file, [&] {
            text = options.json ? file_json_line(file, FrameValues::Shown)
                                : (blank_line ? "\n" : "") + file_report(name, file.header());
            return std::nullopt;
        });
        if (reason) {
            status = ExitStatus::SomeFileFailed;
            write_error(name, *reason);
            text = options.json ? failure_json_line(name, *reason) : "";
        }
        write_output(text);
        blank_line = blank_line || !reason;
    }
    return status;
}

}  // namespace

void add_show(CommandLine& program) {
    const auto options = std::make_shared<ShowOptions>();
    CommandOptions command = program.add(
        "show", "Show stream, tags, scheduling fields and tag frames of each file",
        "brindle show --json jingle.mp3 spot.mp3", [options] { return show(*options); });
    command.flag("--json", options->json,
                 "One JSON object per file, on one line, with every value in full", true);
    command.paths(*options);
}

}  // namespace brindle::host
