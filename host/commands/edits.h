// The options of `brindle set` that assign values, and what they assign.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>

#include "commands/command_line.h"
#include "fields.h"

namespace brindle::host {

// A value that can be shown, before and after.
struct ShownValue {
    std::string label;
    std::function<std::string(const cMPEGHeader&)> text;
};

// One checked assignment.
struct Edit {
    ShownValue shown;
    std::optional<ShownValue> shown_in_record;  // what it sets in the ID3v1 record, too
    std::function<void(cMPEGHeader&)> assign;
    // Where the value is stored: the frame's id in versions 2.3 and 2.2, and of user-defined text
    // its name. "" for what is in the ID3v1 record alone.
    String frame_id;
    String version2_id;
    String field_name;
    // Removes the frames from the tag; `assign` sets the field of the ID3v1 record.
    bool removes = false;
};

// Edits one by one. Raise UsageError as EditOptions::edits() does.
[[nodiscard]] Edit edit_for(const Field& field, const std::string& text, bool unicode);
[[nodiscard]] Edit edit_for_custom_field(const std::string& name, const std::string& text,
                                         bool unicode);
// Of `title`, `cue-in` or `field:Show`
[[nodiscard]] Edit removal_of(const std::string& name);

// All values that the edits change, each once.
[[nodiscard]] std::vector<ShownValue> values_changed_by(const std::vector<Edit>& edits,
                                                        bool separate);

class EditOptions {
public:
    // The options of the fields, --field and --remove. They refer to this object.
    void add_to(CommandOptions& command);
    // In the order in which they are assigned. Raises UsageError for a value that is none, and
    // unless `unicode` is set for text that the code page of hosts does not hold.
    [[nodiscard]] std::vector<Edit> edits(bool unicode) const;

private:
    // By the name of the option.
    std::map<std::string, std::string> values_;
    std::map<std::string, bool> flags_;
    std::vector<std::string> custom_fields_;
    std::vector<std::string> removed_;
};

}  // namespace brindle::host
