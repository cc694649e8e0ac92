// What `brindle set` does to one file, in two ways. The answer is why it failed, or nothing.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_facts.h>

#include "batch/file_batch.h"
#include "commands/command_line.h"
#include "commands/edits.h"

namespace brindle::host {

// A value that a save may not change for hosts.
struct KeptValue {
    ShownValue shown;
    std::function<bool(const cMPEGHeader& header, const TagFacts& facts)> is_kept;
};

struct SetOptions : ChangeOptions {
    std::vector<Edit> edits;
    bool separate = false;
    bool preserve = false;
    bool force = false;
    bool atomic = false;
    bool unicode = false;
    bool host_form = false;
    bool common_form = false;  // see brindle::EditOptions
    std::vector<KeptValue> kept;
    // What saves a file that is refused.
    std::string way_to_force = "--force";
};

// --preserve, --force and --atomic.
void add_saving_options(CommandOptions& command, SetOptions& options);

struct SetReport {
    std::string lines;  // to be printed
    bool is_written = false;
};

// Sets values of one file and leaves all other frames as they stand. Several
// files may be done at once.
[[nodiscard]] std::optional<std::string> set_with_editor(const std::string& name,
                                                         const SetOptions& options,
                                                         SetReport& report);

// Sets and saves one file as hosts do it with SaveAllInfo.
[[nodiscard]] std::optional<std::string> set_in_host_form(const std::string& name,
                                                          const SetOptions& options);

}  // namespace brindle::host
