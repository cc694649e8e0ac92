#include "batch/name_source.h"

#include <system_error>
#include <utility>

#include "system/file_path.h"

namespace brindle::host {

NameSource::NameSource(std::vector<std::string> paths, bool null_separated)
    : paths_(std::move(paths)), null_separated_(null_separated) {}

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
        } else if (next_path_ == paths_.size()) {
            return std::nullopt;
        } else if (paths_[next_path_] == kStandardInput) {
            ++next_path_;
            input_.emplace(null_separated_);
            continue;
        } else {
            found = FoundName{std::move(paths_[next_path_])};
            ++next_path_;
        }
        if (auto file = enter(*std::move(found))) {
            return file;
        }
    }
}

std::optional<FoundName> NameSource::enter(FoundName found) {
    std::error_code error;
    if (!found.failure && std::filesystem::is_directory(path_of(found.name), error)) {
        folder_.emplace(found.name);
        return std::nullopt;
    }
    return found;
}

}  // namespace brindle::host
