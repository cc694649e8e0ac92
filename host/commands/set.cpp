// brindle set: assigns values and saves.
#include <memory>

#include "commands/command_line.h"
#include "commands/edits.h"
#include "commands/set_file.h"
#include "output/standard_streams.h"

namespace brindle::host {

namespace {

ExitStatus set(const SetOptions& options) {
    if (options.edits.empty()) {
        throw UsageError("A value to set or remove is required");
    }
    const auto set_file = [&](const std::string& name) {
        if (options.host_form) {
            return set_in_host_form(name, options);
        }
        SetReport report;
        auto reason = set_with_editor(name, options, report);
        write_output(report.lines);
        return reason;
    };
    return change_files(options, set_file);
}

}  // namespace

void add_saving_options(CommandOptions& command, SetOptions& options) {
    command.flag("--preserve", options.preserve, "Keep the modification time");
    command.flag("--force", options.force,
                 "Save also when frames would be lost, or hosts would find no stream afterwards");
    command.flag("--atomic", options.atomic,
                 "Write a new file also when the tag fits in place: a power cut leaves the old "
                 "file or the new one");
}

void add_set(CommandLine& program) {
    const auto options = std::make_shared<SetOptions>();
    const auto edits = std::make_shared<EditOptions>();
    CommandOptions command =
        program.add("set", "Set values and save them; the audio stays as it is",
                    "brindle set --title \"Morning jingle\" --cue-in 1500 "
                    "--field Show=Breakfast jingle.mp3",
                    [options, edits] {
                        options->edits = edits->edits(options->unicode);
                        return set(*options);
                    });
    edits->add_to(command);
    command.flag("--separate", options->separate,
                 "Title, artist and year leave the ID3v1 record alone");
    add_saving_options(command, *options);
    command.flag("--unicode", options->unicode,
                 "Write text that hosts' code page does not hold as UTF-16, which other "
                 "programs read");
    command.flag("--host-form", options->host_form,
                 "Write all frames anew, in the form in which hosts save them");
    command.exclusive("--host-form", "--unicode");
    command.exclusive("--host-form", "--remove");
    command.changed_paths(*options,
                          "Show old and new values and what a save would do; touch nothing");
}

}  // namespace brindle::host
