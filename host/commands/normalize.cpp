// brindle normalize: rewrites tags in a form that all programs read the same.
#include <memory>
#include <string>

#include "commands/command_line.h"
#include "commands/set_file.h"

namespace brindle::host {

namespace {

constexpr const char16_t* kPictureId = u"APIC";

// Removes all pictures, also those that hosts do not read.
Edit removal_of_pictures() {
    Edit edit;
    edit.shown = {"Pictures that hosts read", [](const cMPEGHeader& header) {
                      return std::to_string(header.TagsInFrame(kPictureId));
                  }};
    edit.assign = [](cMPEGHeader&) {};
    edit.frame_id = kPictureId;
    edit.removes = true;
    return edit;
}

ExitStatus normalize(const SetOptions& options) {
    Journal journal(options.journal, "normalize");
    return change_files(
        options, [&](const std::string& name) { return plan_and_print(name, options, journal); },
        journal);
}

}  // namespace

void add_normalize(CommandLine& program) {
    const auto options = std::make_shared<SetOptions>();
    const auto pictures = std::make_shared<std::string>("keep");
    options->common_form = true;
    CommandOptions command = program.add(
        "normalize", "Rewrite tags so that hosts and other programs read the same texts",
        "brindle normalize --dry-run music", [options, pictures] {
            if (*pictures == "drop") {
                options->edits.push_back(removal_of_pictures());
            }
            return normalize(*options);
        });
    command.word(
        "--pictures", "WHAT", {"keep", "drop"},
        [pictures](const std::string& given) { *pictures = given; },
        "What to do with pictures (default: keep)");
    add_saving_options(command, *options);
    command.changed_paths(*options, "Show how each tag would change; write nothing");
}

}  // namespace brindle::host
