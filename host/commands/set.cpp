// brindle set: assigns values and saves.
#include <memory>

#include "batch/file_batch.h"
#include "commands/commands.h"
#include "commands/set_edits.h"
#include "commands/set_in_host_form.h"
#include "commands/set_options.h"
#include "commands/set_with_editor.h"

namespace brindle::host {

namespace {

ExitStatus set(const SetOptions& options) {
    const auto set_file = options.host_form ? set_in_host_form : set_with_editor;
    return for_each_file(options.files,
                         [&](const std::string& name) { return set_file(name, options); });
}

}  // namespace

void add_set(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<SetOptions>();
    const auto edits = std::make_shared<EditOptions>();
    CLI::App* command =
        add_command(program, "set", "Set values and save them; the audio stays as it is",
                    "brindle set --title \"Morning jingle\" --cue-in 1500 "
                    "--field Show=Breakfast jingle.mp3");
    edits->add_to(*command);
    command
        ->add_flag("--separate", options->separate,
                   "Title, artist and year leave the ID3v1 record alone")
        ->disable_flag_override();
    command
        ->add_flag("--dry-run", options->dry_run,
                   "Show old and new values and what a save would do; touch nothing")
        ->disable_flag_override();
    command->add_flag("--preserve", options->preserve, "Keep the modification time")
        ->disable_flag_override();
    command
        ->add_flag("--force", options->force,
                   "Save also when frames would be lost, or hosts would find no stream afterwards")
        ->disable_flag_override();
    command
        ->add_flag("--atomic", options->atomic,
                   "Write a new file also when the tag fits in place: a power cut leaves the old "
                   "file or the new one")
        ->disable_flag_override();
    CLI::Option* const unicode =
        command->add_flag("--unicode", options->unicode,
                          "Write text that hosts' code page does not hold as UTF-16, which other "
                          "programs read");
    unicode->disable_flag_override();
    command
        ->add_flag("--host-form", options->host_form,
                   "Write all frames anew, in the form in which hosts save them")
        ->disable_flag_override()
        ->excludes(unicode);
    add_operands(*command, "FILE", options->files,
                 "Files whose names end in mp3 or mp2; after -- they may begin with a dash");
    command->callback([options, edits, &chosen] {
        options->edits = edits->edits(options->unicode);
        if (options->edits.empty()) {
            throw CLI::RequiredError("A value to set");
        }
        chosen = [options] { return set(*options); };
    });
}

}  // namespace brindle::host
