// Changes of files in groups: those of a group are planned first, then one flush writes the
// data to restore them to the device, then they are written.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace brindle::host {

// A change of one file that is planned and not yet written.
struct PlannedChange {
    std::optional<std::string> failure = std::nullopt;  // why there is none
    // Empty where nothing is left to do. The answer is why the file failed, or nothing.
    std::function<std::optional<std::string>()> write = nullptr;
};
using PlanStep = std::function<PlannedChange(const std::string& name)>;

// How groups are formed. By default each file is one, and nothing is flushed.
struct GroupRules {
    std::size_t size = 1;
    // Before the changes of a group are written. What it raises ends the run.
    std::function<void()> flush = [] {};
    // Whether a group is to end early.
    std::function<bool()> is_full = [] { return false; };
};

class GroupedChanges {
public:
    // `done` receives each file's outcome, in the order of the files.
    using Done =
        std::function<void(const std::string& name, const std::optional<std::string>& failure)>;
    GroupedChanges(GroupRules rules, Done done)
        : rules_(std::move(rules)), done_(std::move(done)) {}

    // Plans the change of a file. The group is written before that if the file is in it already,
    // and after it when the group is complete. An Error of the step is the file's failure; what
    // else it raises ends the run.
    void add(const std::string& name, const PlanStep& plan);
    // Writes what is left. After SIGINT the rest of a group is not touched.
    void write();

private:
    using FileId = std::pair<std::uint64_t, std::uint64_t>;
    struct Planned {
        std::string name;
        PlannedChange change;
    };

    GroupRules rules_;
    Done done_;
    std::vector<Planned> group_;
    std::set<FileId> files_;
};

}  // namespace brindle::host
