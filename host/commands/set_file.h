// What `brindle set` does to one file, in two ways. The answer is why it failed, or nothing.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "batch/file_batch.h"
#include "commands/edits.h"

namespace brindle::host {

struct SetOptions : ChangeOptions {
    std::vector<Edit> edits;
    bool separate = false;
    bool preserve = false;
    bool force = false;
    bool atomic = false;
    bool unicode = false;
    bool host_form = false;
};

// Sets values of one file and leaves all other frames as they stand. What is to be printed goes to
// `output`. Files may be done on several threads.
[[nodiscard]] std::optional<std::string> set_with_editor(const std::string& name,
                                                         const SetOptions& options,
                                                         std::string& output);

// Sets and saves one file as hosts do it with SaveAllInfo.
[[nodiscard]] std::optional<std::string> set_in_host_form(const std::string& name,
                                                          const SetOptions& options);

}  // namespace brindle::host
