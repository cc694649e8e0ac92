// A value that is set in a file.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

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
    // Where the value stands: the frame's id in versions 2.3 and 2.2, and of user-defined text its
    // name. "" for what stands in the ID3v1 record alone.
    String frame_id;
    String version2_id;
    String field_name;
};

// All values that the edits change, each once.
[[nodiscard]] std::vector<ShownValue> values_changed_by(const std::vector<Edit>& edits,
                                                        bool separate);

}  // namespace brindle::host
