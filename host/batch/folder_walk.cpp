#include "batch/folder_walk.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string_view>
#include <system_error>
#include <utility>

#include "system/file_path.h"

namespace brindle::host {

namespace {

namespace fs = std::filesystem;

constexpr char kSeparator = '/';

bool ends_in_mp3_or_mp2(std::string_view path) {
    constexpr std::size_t kLength = 4;
    if (path.size() < kLength) {
        return false;
    }
    const std::string_view end = path.substr(path.size() - kLength);
    return end[0] == '.' && (end[1] == 'm' || end[1] == 'M') && (end[2] == 'p' || end[2] == 'P') &&
           (end[3] == '3' || end[3] == '2');
}

bool is_folder(const fs::directory_entry& entry) {
    std::error_code error;
    return !entry.is_symlink(error) && entry.is_directory(error);
}

}  // namespace

FolderWalk::FolderWalk(const std::string& folder) {
    const bool is_ended = !folder.empty() && folder.back() == kSeparator;
    levels_.push_back({is_ended ? folder : folder + kSeparator});
}

std::optional<FoundName> FolderWalk::next() {
    while (!levels_.empty()) {
        if (levels_.back().empty()) {
            levels_.pop_back();
            continue;
        }
        std::string path = std::move(levels_.back().back());
        levels_.back().pop_back();
        if (path.back() != kSeparator) {
            return FoundName{std::move(path)};
        }
        if (auto failure = list(path)) {
            if (path.size() > 1) {
                path.pop_back();
            }
            return FoundName{std::move(path), std::move(failure)};
        }
    }
    return std::nullopt;
}

std::optional<std::string> FolderWalk::list(const std::string& folder) {
    std::vector<std::string> entries;
    std::error_code error;
    for (fs::directory_iterator entry(path_of(folder), error), end; !error && entry != end;
         entry.increment(error)) {
        std::string path = name_of(entry->path());
        if (is_folder(*entry)) {
            entries.push_back(std::move(path) + kSeparator);
        } else if (ends_in_mp3_or_mp2(path)) {
            entries.push_back(std::move(path));
        }
    }
    std::sort(entries.begin(), entries.end(), std::greater<>());
    levels_.push_back(std::move(entries));
    if (error) {
        return error.message();
    }
    return std::nullopt;
}

}  // namespace brindle::host
