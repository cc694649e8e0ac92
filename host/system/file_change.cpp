#include "system/file_change.h"

#include <string_view>
#include <utility>

#include <brindle/text.h>

#include "system/file_access.h"
#include "system/input_file.h"

namespace brindle::host {

namespace {

// Readable texts for run-time errors whose descriptions are only names.
struct Words {
    RuntimeError number;
    std::string_view description;
    std::string_view words;
};
constexpr Words kWords[] = {
    {RuntimeError::InvalidCall, "Invalid procedure call or argument",
     "The file is already being changed"},
    {RuntimeError::Overflow, "Overflow", "A number in the file is too large"},
    {RuntimeError::DeviceInputOutput, "Device I/O error",
     "The device could not be read or written"},
    {RuntimeError::InputPastEnd, "Input past end of file",
     "The file was shortened while it was read"},
    {RuntimeError::TooManyFiles, "Too many files", "Too many files are open"},
    {RuntimeError::PathFileAccess, "Path/File access error", "Permission denied"},
};

}  // namespace

std::string reason_of(const Error& error) {
    constexpr std::int32_t kNotValidMp3File = -2147217407;  // whose text begins with the name
    if (error.number() == kNotValidMp3File) {
        return "The file is empty";
    }
    std::string description = to_utf8(error.description());
    for (const Words& row : kWords) {
        if (error.number() == static_cast<std::int32_t>(row.number) &&
            description == row.description) {
            return std::string(row.words);
        }
    }
    return description;
}

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
