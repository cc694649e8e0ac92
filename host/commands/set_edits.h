// The options of `brindle set` that assign values, and what they assign.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "commands/command_line.h"
#include "commands/edit.h"

namespace brindle::host {

// What the command line gives for one option.
struct GivenEdits;

class EditOptions {
public:
    EditOptions();
    ~EditOptions();
    EditOptions(const EditOptions&) = delete;
    EditOptions& operator=(const EditOptions&) = delete;

    void add_to(CommandOptions& command);
    // In the order in which they are assigned. Raises UsageError for a value that is none, and
    // unless `unicode` is set for text that the code page of hosts does not hold.
    [[nodiscard]] std::vector<Edit> edits(bool unicode) const;

private:
    std::unique_ptr<GivenEdits> given_;
};

}  // namespace brindle::host
