#include "commands/set_suggestions.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_facts.h>

#include "commands/row_edits.h"
#include "commands/set_target.h"
#include "listen/listen_to_file.h"
#include "listen/listening_text.h"
#include "output/printable_text.h"
#include "system/file_state.h"
#include "system/input_file.h"

namespace brindle::host {

namespace {

using Failure = std::optional<std::string>;

class SuggestionsOfFile {
public:
    SuggestionsOfFile(const std::string& name, const ListenOptions& listening,
                      const SuggestionOptions& options, SetReport& report, Journal& journal)
        : name_(name),
          listening_(listening),
          options_(options),
          report_(report),
          journal_(journal) {}

    Failure run() {
        std::int64_t bytes = 0;
        const std::optional<FileState> state = state_of(name_);
        if (auto reason = open_file(header_, name_, bytes)) {
            return reason;
        }
        facts_ = read_tag_facts(header_);
        for (const std::string& column : options_.columns) {
            const SetTarget target(column);
            if (options_.overwrite || !target.is_set(header_, facts_)) {
                targets_.push_back(target);
            }
        }
        if (targets_.empty()) {
            return leave("all values are already set");
        }
        const auto heard = listen_to_file(header_, bytes, listening_);
        if (!heard) {
            return "no MPEG audio found";
        }
        if (const auto failure = failure_of(*heard)) {
            return *failure + "; nothing is set";
        }
        RowEdits row = edits_of(row_of(*heard), header_, /*unicode=*/false);
        if (!row.errors.empty()) {
            return row.errors.front();
        }
        if (row.edits.empty()) {
            return leave(row.kept.empty() ? "nothing is suggested"
                                          : "the file already has these values");
        }
        SetOptions changes = changes_of(std::move(row), /*unicode=*/false);
        changes.dry_run = options_.dry_run;
        changes.expected_state = state;
        return set_with_editor(name_, changes, report_, journal_);
    }

private:
    Failure leave(const std::string& why) {
        report_.lines = printable(name_) + ": nothing written, " + why + "\n";
        return std::nullopt;
    }

    [[nodiscard]] EditRow row_of(const Listening& heard) const {
        EditRow row;
        row.file = name_;
        const std::vector<Suggestion> all = suggestions(heard, options_.end_styles);
        for (const SetTarget& target : targets_) {
            const auto found = std::find_if(
                all.begin(), all.end(),
                [&](const Suggestion& suggestion) { return suggestion.column == target.column(); });
            if (found != all.end() && !found->text.empty()) {
                row.cells.push_back({found->column, found->text});
                if (const auto place = edit_column(found->column); place->field == nullptr) {
                    remove_other_cases(place->custom_name, facts_, row);
                }
            }
        }
        return row;
    }

    const std::string& name_;
    const ListenOptions& listening_;
    const SuggestionOptions& options_;
    SetReport& report_;
    Journal& journal_;
    cMPEGHeader header_;
    TagFacts facts_;
    std::vector<SetTarget> targets_;  // to be set
};

}  // namespace

std::optional<std::string> set_suggestions(const std::string& name, const ListenOptions& listening,
                                           const SuggestionOptions& options, SetReport& report,
                                           Journal& journal) {
    auto failure = SuggestionsOfFile(name, listening, options, report, journal).run();
    if (report.is_outdated) {
        // Usually the same file under another name: then nothing is left to do.
        report = {};
        failure = SuggestionsOfFile(name, listening, options, report, journal).run();
    }
    return failure;
}

}  // namespace brindle::host
