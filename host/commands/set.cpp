// brindle set: assigns values and saves.
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "commands/command_line.h"
#include "commands/edits.h"
#include "commands/set_file.h"
#include "output/standard_streams.h"

namespace brindle::host {

namespace {

PlannedChange plan_in_host_form(const std::string& name, const SetOptions& options,
                                Journal& journal) {
    const auto save = [name, &options, &journal] {
        return set_in_host_form(name, options, journal);
    };
    return options.dry_run ? PlannedChange{save()} : PlannedChange{std::nullopt, save};
}

ExitStatus set(const SetOptions& options) {
    if (options.edits.empty()) {
        throw UsageError("A value to set or remove is required");
    }
    Journal journal(options.journal, "set");
    const auto plan = [&](const std::string& name) {
        return options.host_form ? plan_in_host_form(name, options, journal)
                                 : plan_and_print(name, options, journal);
    };
    return change_files(options, plan, journal);
}

}  // namespace

PlannedChange plan_and_print(const std::string& name, const SetOptions& options, Journal& journal) {
    const auto report = std::make_shared<SetReport>();
    PlannedChange change = plan_with_editor(name, options, *report, journal);
    write_output(report->lines);
    if (change.write) {
        report->lines.clear();
        change.write = [report, save = std::move(change.write)] {
            auto reason = save();
            write_output(report->lines);
            return reason;
        };
    }
    return change;
}

void add_saving_options(CommandOptions& command, SetOptions& options) {
    command.flag("--preserve", options.preserve, "Keep the modification time");
    command.flag("--force", options.force,
                 "Save even if frames would be lost, or hosts would find no stream afterwards");
    command.flag("--atomic", options.atomic,
                 "Write a new file even if the tag fits in place: a power cut leaves the old "
                 "file or the new one");
    command.journal(options.journal);
}

void add_set(CommandLine& program) {
    const auto options = std::make_shared<SetOptions>();
    const auto edits = std::make_shared<EditOptions>();
    CommandOptions command =
        program.add("set", "Set values and save them; the audio is not changed",
                    "brindle set --title \"Morning jingle\" --cue-in 1500 "
                    "--field Show=Breakfast jingle.mp3",
                    [options, edits] {
                        options->edits = edits->edits(options->unicode);
                        return set(*options);
                    });
    edits->add_to(command);
    command.flag("--separate", options->separate,
                 "Do not set title, artist and year in the ID3v1 record");
    add_saving_options(command, *options);
    command.flag("--unicode", options->unicode,
                 "Write text outside the code page of hosts as UTF-16, which other "
                 "programs read");
    command.flag("--host-form", options->host_form,
                 "Rewrite all frames, in the form in which hosts save them");
    command.exclusive("--host-form", "--unicode");
    command.exclusive("--host-form", "--remove");
    command.changed_paths(*options,
                          "Show old and new values and what a save would do; write nothing");
}

}  // namespace brindle::host
