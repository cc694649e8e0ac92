#include "commands/set_suggestions.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <variant>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_facts.h>
#include <brindle/text.h>

#include "commands/row_edits.h"
#include "listen/listen_to_file.h"
#include "listen/listening_text.h"
#include "output/printable_text.h"
#include "system/file_state.h"
#include "system/input_file.h"

namespace brindle::host {

namespace {

using Failure = std::optional<std::string>;

bool consists_of(const String& text, const char16_t* characters) {
    return text.find_first_not_of(characters) == String::npos;
}

String in_capitals(String text) {
    for (char16_t& unit : text) {
        unit = unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - u'a' + u'A') : unit;
    }
    return text;
}

// The user-defined text that a suggestion goes into.
struct Target {
    explicit Target(const std::string& title) : column(title) {
        const auto place = edit_column(title);
        is_point = place->field != nullptr && place->field->access.type == FieldType::Milliseconds;
        is_in_any_case = place->field == nullptr;
        name = place->field != nullptr ? String(place->field->custom_name) : place->custom_name;
    }

    [[nodiscard]] bool has_name(const TagText& text) const {
        return text.id == u"TXXX" &&
               (text.description == name ||
                (is_in_any_case && in_capitals(text.description) == in_capitals(name)));
    }

    // 0 is no point in time.
    [[nodiscard]] bool is_nothing(const String& text) const {
        return consists_of(text, is_point ? u" 0" : u" ");
    }

    // To hosts and to other programs, which find more.
    [[nodiscard]] bool is_set(const cMPEGHeader& header, const TagFacts& facts) const {
        const Variant value = header.CustomFieldRetrieve(name);
        const auto* const text = std::get_if<String>(&value);
        return (text != nullptr && !is_nothing(*text)) ||
               std::any_of(facts.texts.begin(), facts.texts.end(), [&](const TagText& candidate) {
                   return has_name(candidate) && !is_nothing(candidate.text());
               });
    }

    std::string column;
    String name;
    bool is_point = false;
    // Other programs write the names of ReplayGain in small letters, too.
    bool is_in_any_case = false;
};

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
            const Target target(column);
            if (options_.overwrite || !target.is_set(header_, facts_)) {
                targets_.push_back(target);
            }
        }
        if (targets_.empty()) {
            return leave("all of it is set already");
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
            return leave(row.kept.empty() ? "nothing is suggested" : "the file is so already");
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
        for (const Target& target : targets_) {
            const auto found = std::find_if(
                all.begin(), all.end(),
                [&](const Suggestion& suggestion) { return suggestion.column == target.column; });
            if (found != all.end() && !found->text.empty()) {
                row.cells.push_back({found->column, found->text});
                add_removals(target, row);
            }
        }
        return row;
    }

    // The same value under the name in other letters would contradict the new one.
    void add_removals(const Target& target, EditRow& row) const {
        for (const TagText& text : facts_.texts) {
            const std::string column = "field:" + to_utf8(text.description);
            if (target.has_name(text) && text.description != target.name &&
                std::find(row.removed.begin(), row.removed.end(), column) == row.removed.end()) {
                row.removed.push_back(column);
            }
        }
    }

    const std::string& name_;
    const ListenOptions& listening_;
    const SuggestionOptions& options_;
    SetReport& report_;
    Journal& journal_;
    cMPEGHeader header_;
    TagFacts facts_;
    std::vector<Target> targets_;  // to be set
};

}  // namespace

std::optional<std::string> set_suggestions(const std::string& name, const ListenOptions& listening,
                                           const SuggestionOptions& options, SetReport& report,
                                           Journal& journal) {
    auto failure = SuggestionsOfFile(name, listening, options, report, journal).run();
    if (report.is_outdated) {
        // The same file under another name, as a rule: then nothing is left to do.
        report = {};
        failure = SuggestionsOfFile(name, listening, options, report, journal).run();
    }
    return failure;
}

}  // namespace brindle::host
