#include "system/file_change.h"

#include <utility>

#include "system/file_access.h"
#include "system/input_file.h"

namespace brindle::host {

std::optional<std::string> FileChange::open(cMPEGHeader& header) {
    // A pipe or a device must not even be opened.
    std::int64_t size = 0;
    if (auto reason = reason_against_file(name_, size)) {
        return reason;
    }
    if (auto reason = guard_.acquire(name_)) {
        return reason;
    }
    before_ = state_of(name_);
    return open_file(header, name_);
}

std::optional<std::string> FileChange::reason_against(SaveWay way) const {
    return way == SaveWay::InPlace ? reason_against_writing(name_)
                                   : reason_against_replacing(name_);
}

std::vector<std::string> FileChange::remarks() const {
    std::vector<std::string> remarks;
    if (!is_rebuilt()) {
        return remarks;
    }
    if (before_->links > 1) {
        remarks.emplace_back("its other names keep the old content");
    }
    if (after_->owner != before_->owner) {
        remarks.emplace_back("it belongs to another user now");
    } else if (after_->group != before_->group) {
        remarks.emplace_back("it belongs to another group now");
    }
    for (const auto& [name, value] : before_->user_attributes) {
        const auto kept = after_->user_attributes.find(name);
        if (kept == after_->user_attributes.end() || kept->second != value) {
            remarks.push_back("its attribute " + name + " was not kept");
        }
    }
    return remarks;
}

std::optional<std::string> FileChange::conclude(const std::string& done, bool preserve,
                                                std::vector<std::string>& remarks) {
    after_ = state_of(name_);
    if (!after_ || !before_) {
        return done + ", but another program has removed it since";
    }
    remarks = this->remarks();
    return preserve ? restore_modification_time(name_, *before_) : std::nullopt;
}

bool FileChange::is_rebuilt() const {
    return after_ && before_ && !after_->is_same_file(*before_);
}

}  // namespace brindle::host
