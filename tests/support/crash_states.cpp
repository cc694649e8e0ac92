#include "support/crash_states.h"

#include <algorithm>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <utility>
#include <variant>

namespace brindle::test {
namespace {

// A number for each file that there ever was: names change.
using FileNumber = std::size_t;
using Directory = std::map<String, FileNumber>;

// A write or a change of length that is not flushed.
struct Change {
    FileNumber file = 0;
    const Written* write = nullptr;  // null: a change of length
    std::size_t new_length = 0;      // of a change of length

    [[nodiscard]] std::size_t begin() const { return write->offset; }
    [[nodiscard]] std::size_t end() const { return write->offset + write->bytes.size(); }
};

// A part of the file.
struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;
};

// What is kept of a change. Of a write: these ranges of the file, which is at least `length` long.
// Of a change of length: the length.
struct Kept {
    std::vector<Range> ranges;
    std::size_t length = 0;
};
using Choice = std::optional<Kept>;  // empty: the change is lost

Kept whole(const Change& change) {
    if (change.write == nullptr) {
        return {{}, change.new_length};
    }
    return {{{change.begin(), change.end()}}, change.end()};
}

// The sectors that a write touches, as far as it does.
std::vector<Range> sectors_of(const Change& change, std::size_t sector) {
    std::vector<Range> sectors;
    if (change.write != nullptr) {
        for (std::size_t begin = change.begin(); begin < change.end();) {
            const std::size_t end = std::min(change.end(), (begin / sector + 1) * sector);
            sectors.push_back({begin, end});
            begin = end;
        }
    }
    return sectors;
}

// The ways to keep a part of a write that are enumerated.
std::vector<Kept> parts(const Change& change, std::size_t sector) {
    std::vector<Kept> ways;
    for (const Range& one : sectors_of(change, sector)) {
        ways.push_back({{{change.begin(), one.end}}, one.end});
        ways.push_back({{{one.begin, change.end()}}, change.end()});
        ways.push_back({{one}, one.end});
    }
    if (change.write != nullptr) {
        ways.push_back({{}, change.end()});
    }
    return ways;
}

Choice any_sectors(const Change& change, std::size_t sector, std::mt19937& random) {
    Kept kept;
    for (const Range& one : sectors_of(change, sector)) {
        if (random() % 2 == 0) {
            kept.ranges.push_back(one);
            kept.length = one.end;
        }
    }
    return kept.ranges.empty() ? Choice() : kept;
}

void apply(const Change& change, const Kept& kept, Bytes& content) {
    if (change.write == nullptr) {
        content.resize(kept.length);
        return;
    }
    content.resize(std::max(content.size(), kept.length));
    for (const Range& range : kept.ranges) {
        std::copy_n(
            change.write->bytes.begin() + static_cast<std::ptrdiff_t>(range.begin - change.begin()),
            range.end - range.begin, content.begin() + static_cast<std::ptrdiff_t>(range.begin));
    }
}

// What has happened up to a moment, and what of it is on the device for certain.
class Journal {
public:
    explicit Journal(const Folder& before) {
        for (const auto& [name, content] : before) {
            live_[name] = content_.size();
            content_.push_back(content);
        }
        directories_.push_back(live_);
    }

    void add(const FileOperation& operation) {
        std::visit([this](const auto& one) { add_one(one); }, operation);
    }

    [[nodiscard]] const std::vector<Change>& pending() const { return pending_; }
    // The directories that may be on the device.
    [[nodiscard]] const std::vector<Directory>& directories() const { return directories_; }

    // `choices` has one for each pending change.
    [[nodiscard]] Folder state(const Directory& directory,
                               const std::vector<Choice>& choices) const {
        std::map<FileNumber, Bytes> content;
        for (const auto& [name, file] : directory) {
            content[file] = content_[file];
        }
        for (std::size_t i = 0; i < pending_.size(); ++i) {
            const auto file = content.find(pending_[i].file);
            if (choices[i] && file != content.end()) {
                apply(pending_[i], *choices[i], file->second);
            }
        }
        Folder files;
        for (const auto& [name, file] : directory) {
            files[name] = content[file];
        }
        return files;
    }

private:
    void add_one(const Created& created) {
        live_[created.name] = content_.size();
        content_.emplace_back();
        directories_.push_back(live_);
    }
    void add_one(const Renamed& renamed) {
        live_[renamed.to] = number_of(renamed.from);
        live_.erase(renamed.from);
        directories_.push_back(live_);
    }
    void add_one(const Removed& removed) {
        live_.erase(removed.name);
        directories_.push_back(live_);
    }
    void add_one(const FolderFlushed& /*flushed*/) { directories_ = {live_}; }
    void add_one(const Written& written) {
        pending_.push_back({.file = number_of(written.name), .write = &written});
    }
    void add_one(const LengthSet& set) {
        pending_.push_back({.file = number_of(set.name), .new_length = set.length});
    }
    void add_one(const Flushed& flushed) {
        const FileNumber file = number_of(flushed.name);
        for (const Change& change : pending_) {
            if (change.file == file) {
                apply(change, whole(change), content_[file]);
            }
        }
        std::erase_if(pending_, [&](const Change& change) { return change.file == file; });
    }

    [[nodiscard]] FileNumber number_of(const String& name) const {
        const auto found = live_.find(name);
        if (found == live_.end()) {
            throw std::logic_error("an operation on a file that does not exist");
        }
        return found->second;
    }

    Directory live_;
    std::vector<Directory> directories_;
    std::vector<Bytes> content_;  // on the device, by file
    std::vector<Change> pending_;
};

// Passes on each state once.
class States {
public:
    explicit States(const std::function<void(const CrashState&)>& visit) : visit_(visit) {}

    void add(CrashState state) {
        const auto [place, is_new] =
            found_.insert(std::pair(state.finished, std::move(state.files)));
        if (is_new) {
            visit_({.files = place->second, .finished = place->first});
        }
    }

private:
    const std::function<void(const CrashState&)>& visit_;
    std::set<std::pair<bool, Folder>> found_;
};

// Choices for the pending changes of one moment.
class Enumeration {
public:
    Enumeration(const std::vector<Change>& pending, const CrashStateOptions& options)
        : pending_(pending), options_(options) {}

    [[nodiscard]] std::vector<std::vector<Choice>> all() const {
        std::vector<std::vector<Choice>> found;
        if (pending_.size() <= options_.max_combined_writes) {
            for (std::size_t mask = 0; mask < std::size_t{1} << pending_.size(); ++mask) {
                found.push_back(those([&](std::size_t i) { return (mask >> i & 1) != 0; }));
            }
        } else {
            for (std::size_t count = 0; count <= pending_.size(); ++count) {
                found.push_back(those([&](std::size_t i) { return i < count; }));
            }
        }
        for (std::size_t torn = 0; torn < pending_.size(); ++torn) {
            for (const Kept& part : parts(pending_[torn], options_.sector)) {
                for (const bool others : {false, true}) {
                    found.push_back(those([&](std::size_t) { return others; }));
                    found.back()[torn] = part;
                }
            }
        }
        return found;
    }

    [[nodiscard]] std::vector<Choice> any(std::mt19937& random) const {
        std::vector<Choice> choices;
        for (const Change& change : pending_) {
            switch (change.write != nullptr ? random() % 4 : random() % 2) {
                case 0:
                    choices.emplace_back();
                    break;
                case 1:
                    choices.emplace_back(whole(change));
                    break;
                case 2: {
                    const std::vector<Kept> torn = parts(change, options_.sector);
                    choices.emplace_back(torn[random() % torn.size()]);
                    break;
                }
                default:
                    choices.push_back(any_sectors(change, options_.sector, random));
            }
        }
        return choices;
    }

private:
    template <typename IsKept>
    [[nodiscard]] std::vector<Choice> those(IsKept is_kept) const {
        std::vector<Choice> choices;
        for (std::size_t i = 0; i < pending_.size(); ++i) {
            choices.push_back(is_kept(i) ? Choice(whole(pending_[i])) : std::nullopt);
        }
        return choices;
    }

    const std::vector<Change>& pending_;
    const CrashStateOptions& options_;
};

bool is_flush(const FileOperation& operation) {
    return std::holds_alternative<Flushed>(operation) ||
           std::holds_alternative<FolderFlushed>(operation);
}

}  // namespace

void for_each_crash_state(const Folder& before, const std::vector<FileOperation>& operations,
                          const CrashStateOptions& options,
                          const std::function<void(const CrashState&)>& visit) {
    States states(visit);
    std::vector<Journal> moments{Journal(before)};
    for (const FileOperation& operation : operations) {
        moments.push_back(moments.back());
        moments.back().add(operation);
    }
    const std::size_t end = operations.size();
    for (std::size_t moment = 0; moment <= end; ++moment) {
        // Until the next flush every later moment has the states of this one, and more.
        if (moment != end && !is_flush(operations[moment])) {
            continue;
        }
        const Journal& journal = moments[moment];
        for (const auto& choices : Enumeration(journal.pending(), options).all()) {
            for (const Directory& directory : journal.directories()) {
                states.add({journal.state(directory, choices), moment == end});
            }
        }
    }
    std::mt19937 random(options.seed);
    for (std::size_t sample = 0; sample < options.samples; ++sample) {
        const std::size_t moment = random() % moments.size();
        const Journal& journal = moments[moment];
        const auto& directories = journal.directories();
        const Directory& directory = directories[random() % directories.size()];
        states.add({journal.state(directory, Enumeration(journal.pending(), options).any(random)),
                    moment == end});
    }
}

}  // namespace brindle::test
