#include "commands/edit.h"

#include <algorithm>
#include <utility>

namespace brindle::host {

std::vector<ShownValue> values_changed_by(const std::vector<Edit>& edits, bool separate) {
    std::vector<ShownValue> values;
    const auto add = [&](ShownValue value) {
        const bool is_known = std::any_of(values.begin(), values.end(), [&](const ShownValue& v) {
            return v.label == value.label;
        });
        if (!is_known) {
            values.push_back(std::move(value));
        }
    };
    for (const Edit& edit : edits) {
        add(edit.shown);
        if (edit.shown_in_record && !separate) {
            add(*edit.shown_in_record);
        }
    }
    return values;
}

}  // namespace brindle::host
