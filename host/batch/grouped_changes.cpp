#include "batch/grouped_changes.h"

#include <algorithm>

#include "batch/file_batch.h"
#include "system/file_state.h"
#include "system/interruption.h"

namespace brindle::host {

void GroupedChanges::add(const std::string& name, const PlanStep& plan) {
    // The group holds a lock on each of its files.
    if (const auto state = state_of(name);
        state && !files_.emplace(state->volume, state->number).second) {
        write();
        files_.emplace(state->volume, state->number);
    }
    PlannedChange change;
    change.failure = outcome_of([&] {
        change = plan(name);
        return change.failure;
    });
    group_.push_back({name, std::move(change)});
    if (group_.size() >= rules_.size || rules_.is_full()) {
        write();
    }
}

void GroupedChanges::write() {
    const bool writes = std::any_of(group_.begin(), group_.end(), [](const Planned& planned) {
        return planned.change.write != nullptr;
    });
    if (writes) {
        rules_.flush();
    }
    bool is_first = true;
    for (Planned& planned : group_) {
        const std::string& name = planned.name;
        PlannedChange& change = planned.change;
        if (change.write && !is_first && is_interrupted()) {
            break;
        }
        if (change.write) {
            is_first = false;
            change.failure = outcome_of(change.write);
            change.write = nullptr;  // releases the file
        }
        done_(name, change.failure);
    }
    group_.clear();
    files_.clear();
}

}  // namespace brindle::host
