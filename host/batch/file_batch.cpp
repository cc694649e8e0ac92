#include "batch/file_batch.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <system_error>
#include <vector>

#include <brindle/error.h>

#include "batch/folder_walk.h"
#include "output/printable_text.h"
#include "output/standard_streams.h"
#include "system/error_text.h"
#include "system/file_path.h"
#include "system/interruption.h"
#include "system/process.h"
#include "system/terminal.h"

namespace brindle::host {

namespace {

bool is_folder(const std::string& path) {
    std::error_code error;
    return path != kStandardInput && std::filesystem::is_directory(path_of(path), error);
}

std::size_t count_files(const std::vector<std::string>& folders) {
    std::size_t count = 0;
    for (const std::string& folder : folders) {
        FolderWalk walk(folder);
        while (walk.next()) {
            ++count;
        }
    }
    return count;
}

bool is_yes(std::string answer) {
    while (!answer.empty() && (answer.back() == '\n' || answer.back() == '\r')) {
        answer.pop_back();
    }
    return answer == "y" || answer == "Y" || answer == "yes";
}

// `3 of 12 files`, or `3 files` if the total is unknown.
std::string progress(std::size_t done, const PathOptions& options) {
    const bool is_counted = std::none_of(
        options.paths.begin(), options.paths.end(),
        [](const std::string& path) { return path == kStandardInput || is_folder(path); });
    return std::to_string(done) +
           (is_counted ? " of " + std::to_string(options.paths.size()) : "") + " files";
}

}  // namespace

// An error is reported for its file, and the next file is processed.
std::optional<std::string> outcome_of(const FileStep& step) {
    try {
        return step();
    } catch (const Error& error) {
        return reason_of(error);
    } catch (const std::bad_alloc&) {
        return "Out of memory";
    }
}

std::optional<std::string> outcome_of(InputFile& file, const FileStep& step) {
    return outcome_of([&] {
        const auto reason = file.open();
        return reason ? reason : step();
    });
}

Consent ask_for_folders(const ChangeOptions& options) {
    std::vector<std::string> folders;
    std::copy_if(options.paths.begin(), options.paths.end(), std::back_inserter(folders),
                 is_folder);
    if (folders.empty() || options.yes || options.dry_run) {
        return Consent::Given;
    }
    if (!can_ask()) {
        return Consent::NobodyToAsk;
    }
    constexpr std::size_t kLongestAnswer = 256;
    write_note("Change " + std::to_string(count_files(folders)) + " files in " +
               comma_list(folders, [](const std::string& folder) { return printable(folder); }) +
               "? [y/N] ");
    std::string answer;
    const bool has_failed = read_input(answer, kLongestAnswer).has_value();
    return !has_failed && is_yes(answer) ? Consent::Given : Consent::Refused;
}

NamedFolders folders_named_by_input(const ChangeOptions& options) {
    return options.yes || options.dry_run ? NamedFolders::Walked : NamedFolders::Refused;
}

ExitStatus for_each_file(const ChangeOptions& options, const PlanStep& plan,
                         const GroupRules& rules) {
    watch_for_interruption(SecondSignal::Ignored);
    const PathOptions& paths = options;
    NameSource names(paths, folders_named_by_input(options));
    std::size_t done = 0;
    std::size_t failed = 0;
    GroupedChanges changes(rules,
                           [&](const std::string& name, const std::optional<std::string>& reason) {
                               if (reason) {
                                   ++failed;
                                   write_error(name, *reason);
                               }
                               ++done;
                           });
    while (!is_interrupted()) {
        if (names.may_wait()) {
            changes.write();
        }
        const std::optional<FoundName> found = names.next();
        if (!found) {
            break;
        }
        changes.add(found->name, [&](const std::string& name) {
            return found->failure ? PlannedChange{found->failure} : plan(name);
        });
    }
    changes.write();
    if (is_interrupted()) {
        write_error("interrupted after " + progress(done, options) + ", " + std::to_string(failed) +
                    " failed");
        return interrupted_status();
    }
    return failed > 0 ? ExitStatus::SomeFileFailed : ExitStatus::AllFine;
}

}  // namespace brindle::host
