// brindle normalize: rewrites tags in a form that all programs read the same.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "commands/command_line.h"
#include "commands/normalized_file.h"
#include "commands/repaired_text.h"
#include "commands/set_file.h"
#include "output/standard_streams.h"
#include "pictures/shrunk_picture.h"

namespace brindle::host {

namespace {

constexpr const char16_t* kPictureId = u"APIC";
constexpr const char* kPictures = "--pictures";

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

// Of `keep`, `shrink` or `drop`, with or without `extract`.
PictureOptions picture_options(const std::string& list) {
    PictureOptions options;
    int choices = 0;
    for (const std::string& word : words_in(kPictures, list)) {
        bool* const chosen = word == "shrink"    ? &options.shrinks
                             : word == "drop"    ? &options.drops
                             : word == "extract" ? &options.extracts
                                                 : nullptr;
        if (chosen == nullptr && word != "keep") {
            throw UsageError(std::string(kPictures) + ": '" + word +
                             "' is not keep, shrink, extract or drop");
        }
        if (chosen != nullptr) {
            *chosen = true;
        }
        choices += word == "extract" ? 0 : 1;
    }
    if (choices > 1) {
        throw UsageError(std::string(kPictures) + ": only one of keep, shrink and drop");
    }
    if (choices == 0 && !options.extracts) {
        throw UsageError(std::string(kPictures) + ": one of keep, shrink, extract and drop");
    }
    return options;
}

ExitStatus normalize(SetOptions& options, const NormalizeOptions& more) {
    if (more.pictures.drops) {
        options.edits.push_back(removal_of_pictures());
    }
    options.work = [&more](const std::string& name) { return normalize_file(name, more); };
    Journal journal(options.journal, "normalize");
    if (more.pictures.shrinks) {
        if (const auto reason = reason_against_shrinking()) {
            write_error("normalize " + std::string(kPictures) + " shrink: " + *reason);
            return ExitStatus::WrongUsage;
        }
        if (!more.pictures.extracts && !journal.is_kept()) {
            throw UsageError(std::string(kPictures) +
                             " shrink requires a journal, or shrink,extract");
        }
    }
    return change_files(
        options, [&](const std::string& name) { return plan_and_print(name, options, journal); },
        journal);
}

}  // namespace

void add_normalize(CommandLine& program) {
    const auto options = std::make_shared<SetOptions>();
    const auto more = std::make_shared<NormalizeOptions>();
    const auto pictures = std::make_shared<std::string>("keep");
    options->common_form = true;
    CommandOptions command = program.add(
        "normalize", "Rewrite tags so that hosts and other programs read the same texts",
        "brindle normalize --dry-run music", [options, more, pictures] {
            more->pictures = picture_options(*pictures);
            return normalize(*options, *more);
        });
    command.text(
        kPictures, "WHAT", [pictures](const std::string& given) { *pictures = given; },
        "keep (default), shrink to what hosts read, drop, or extract into files beside; "
        "shrink,extract and extract,drop do both");
    command.flag("--strip-foreign", more->strips_foreign, "Remove APEv2 and Lyrics3 tags");
    command.word(
        "--repair-text", "CODEPAGE", repairable_code_pages(),
        [more](const std::string& given) { more->code_page = given; },
        "Repair text that was written in this encoding and labelled with another one");
    add_saving_options(command, *options);
    command.changed_paths(*options, "Show how each tag would change; write nothing");
}

}  // namespace brindle::host
