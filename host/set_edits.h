// The options of `brindle set` that assign values, and what they assign.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <brindle/cMPEGHeader.h>

namespace brindle::host {

// A value that can be shown, before and after.
struct ShownValue {
    std::string label;
    std::function<std::string(const cMPEGHeader&)> text;
};

// One assignment, checked already.
struct Edit {
    ShownValue shown;
    std::optional<ShownValue> shown_in_record;  // what it sets in the ID3v1 record, too
    std::function<void(cMPEGHeader&)> assign;
    // The frame of a version 2 tag in whose place it stands: its id, and the description of a TXX.
    String version2_id;
    String version2_name;
};

// What the command line gives for one option.
struct GivenEdits;

class EditOptions {
public:
    EditOptions();
    ~EditOptions();
    EditOptions(const EditOptions&) = delete;
    EditOptions& operator=(const EditOptions&) = delete;

    void add_to(CLI::App& command);
    // In the order in which they are assigned. Raises CLI::ParseError for a value that is none.
    [[nodiscard]] std::vector<Edit> edits() const;

private:
    std::unique_ptr<GivenEdits> given_;
};

// All values that the edits change, each once.
[[nodiscard]] std::vector<ShownValue> values_changed_by(const std::vector<Edit>& edits,
                                                        bool separate);

}  // namespace brindle::host
