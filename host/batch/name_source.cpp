#include "batch/name_source.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "system/file_access.h"
#include "system/interruption.h"
#include "system/process.h"

namespace brindle::host {

namespace {

constexpr std::size_t kBlock = std::size_t{64} * 1024;
// No system has names as long as this. Longer input is not a list of names, and is not buffered.
constexpr std::size_t kLongestName = kBlock;

}  // namespace

bool NameInput::is_separator(char c) const {
    // A name never holds a NUL.
    return c == '\0' || (c == '\n' && !by_nulls_);
}

std::optional<FoundName> NameInput::next() {
    while (position_ < block_.size() || fill()) {
        const char c = block_[position_];
        ++position_;
        if (!is_separator(c)) {
            if (name_.size() < kLongestName) {
                name_.push_back(c);
            }
        } else if (!name_.empty()) {
            return FoundName{std::exchange(name_, {})};
        }
    }
    if (!name_.empty() && !is_interrupted()) {
        return FoundName{std::exchange(name_, {})};
    }
    if (failure_) {
        return FoundName{"standard input", std::exchange(failure_, std::nullopt)};
    }
    return std::nullopt;
}

bool NameInput::has_name() const {
    return std::any_of(block_.begin() + static_cast<std::ptrdiff_t>(position_), block_.end(),
                       [this](char c) { return is_separator(c); });
}

bool NameInput::fill() {
    position_ = 0;
    if (has_failed_) {
        block_.clear();
        return false;
    }
    failure_ = read_input(block_, kBlock);
    has_failed_ = failure_.has_value();
    if (is_first_ && !block_.empty()) {
        by_nulls_ = by_nulls_ || block_.find('\0') != std::string::npos;
        is_first_ = false;
    }
    return !block_.empty();
}

NameSource::NameSource(PathOptions options, NamedFolders folders)
    : options_(std::move(options)), folders_(folders) {}

std::optional<FoundName> NameSource::next() {
    while (true) {
        if (folder_) {
            if (auto found = folder_->next()) {
                return found;
            }
            folder_.reset();
        }
        std::optional<FoundName> found;
        if (input_) {
            found = input_->next();
            if (!found) {
                input_.reset();
                continue;
            }
        } else if (next_path_ == options_.paths.size()) {
            return std::nullopt;
        } else if (options_.paths[next_path_] == kStandardInput) {
            ++next_path_;
            input_.emplace(options_.null_separated);
            continue;
        } else {
            found = FoundName{std::move(options_.paths[next_path_])};
            ++next_path_;
        }
        if (auto file = enter(*std::move(found))) {
            return file;
        }
    }
}

bool NameSource::may_wait() const {
    if (input_) {
        return !input_->has_name();
    }
    return next_path_ < options_.paths.size() && options_.paths[next_path_] == kStandardInput;
}

std::optional<FoundName> NameSource::enter(FoundName found) {
    FileStatus status;
    if (found.failure || read_status(found.name, status)) {
        return found;  // who reads the file learns why it can't be
    }
    if (status.kind != FileKind::Folder) {
        found.status = status;
        return found;
    }
    if (input_ && folders_ == NamedFolders::Refused) {
        found.failure = "Is a folder; --yes changes all files in it";
        return found;
    }
    folder_.emplace(found.name);
    return std::nullopt;
}

}  // namespace brindle::host
