// A user-defined text (TXXX) that is set only where it is empty.
#pragma once

#include <string>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_facts.h>

#include "commands/edit_table.h"

namespace brindle::host {

class SetTarget {
public:
    // By a column of a table of edits, such as cue-in or field:NAME.
    explicit SetTarget(const std::string& column);

    [[nodiscard]] const std::string& column() const { return column_; }
    // To hosts or to other programs, which find more. A point of 0 is none.
    [[nodiscard]] bool is_set(const cMPEGHeader& header, const TagFacts& facts) const;

private:
    [[nodiscard]] bool has_name(const TagText& text) const;
    [[nodiscard]] bool is_nothing(const String& text) const;

    std::string column_;
    String name_;
    bool is_point_ = false;
    // Other programs write custom names, such as those of ReplayGain, in small letters, too.
    bool is_in_any_case_ = false;
};

// Lets the row take out texts under the name of a custom field in other letters: the same value
// there would contradict the new one.
void remove_other_cases(const String& name, const TagFacts& facts, EditRow& row);

}  // namespace brindle::host
