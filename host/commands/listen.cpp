// brindle listen: loudness, where sound begins and ends, cue points.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <brindle/text.h>

#include "batch/batch.h"
#include "batch/file_batch.h"
#include "cache/cached_batch.h"
#include "commands/command_line.h"
#include "commands/set_suggestions.h"
#include "journal/journal.h"
#include "listen/listen_to_file.h"
#include "listen/listening_csv.h"
#include "listen/listening_json.h"
#include "listen/listening_record.h"
#include "listen/listening_text.h"
#include "listen/suggestions.h"
#include "output/file_json.h"
#include "output/printable_text.h"
#include "output/standard_streams.h"
#include "system/input_file.h"

namespace brindle::host {

namespace {

struct ListenCommand {
    BatchOptions batch;
    CacheOptions cache;
    ListenOptions listening;
    bool json = false;
    bool csv = false;
    double reference = kReplayGainReference;
    std::optional<std::string> set;
    std::optional<std::string> end_style_texts;
    SuggestionOptions suggestions;
    bool yes = false;
    JournalOptions journal;
};

// --- options that are lists

struct SetWord {
    std::string_view word;
    std::vector<const char*> columns;
};

std::vector<std::string> columns_to_set(const std::string& list) {
    static const std::array<SetWord, 4> kWords{{{"cue-in", {kCueInColumn}},
                                                {"sectone", {kSectoneColumn}},
                                                {"loudness", {kTrackGainColumn, kTrackPeakColumn}},
                                                {"end-style", {kEndStyleColumn}}}};
    std::vector<std::string> columns;
    for (const std::string& word : words_in("--set", list)) {
        const auto* const found = std::find_if(
            kWords.begin(), kWords.end(), [&](const SetWord& one) { return one.word == word; });
        if (found == kWords.end()) {
            throw UsageError("--set: '" + word +
                             "' is none of cue-in, sectone, loudness and end-style");
        }
        for (const char* column : found->columns) {
            if (std::find(columns.begin(), columns.end(), column) == columns.end()) {
                columns.emplace_back(column);
            }
        }
    }
    if (columns.empty()) {
        throw UsageError("--set: the list is empty");
    }
    return columns;
}

// cold=TEXT,fade=TEXT
EndStyleTexts end_styles_in(const std::string& list) {
    EndStyleTexts texts;
    for (const std::string& word : words_in("--end-style-texts", list)) {
        const std::size_t equals = std::min(word.find('='), word.size());
        const std::string style = word.substr(0, equals);
        std::string* const text = style == "cold"   ? &texts.cold
                                  : style == "fade" ? &texts.fade
                                                    : nullptr;
        if (text == nullptr || equals + 1 >= word.size()) {
            throw UsageError("--end-style-texts: '" + word +
                             "' is neither cold=TEXT nor fade=TEXT");
        }
        if (!text->empty()) {
            throw UsageError("--end-style-texts: '" + style + "' is given twice");
        }
        *text = word.substr(equals + 1);
        if (!fits_code_page(from_utf8(*text))) {
            throw UsageError("--end-style-texts: hosts cannot read all characters of '" + *text +
                             "'");
        }
    }
    return texts;
}

void read_lists(ListenCommand& options) {
    if (options.end_style_texts) {
        options.suggestions.end_styles = end_styles_in(*options.end_style_texts);
    }
    if (!options.set) {
        if (options.end_style_texts && !options.csv) {
            throw UsageError("--end-style-texts takes --csv or --set end-style");
        }
        return;
    }
    options.suggestions.columns = columns_to_set(*options.set);
    const auto sets = [&](const char* column) {
        const auto& columns = options.suggestions.columns;
        return std::find(columns.begin(), columns.end(), column) != columns.end();
    };
    if (sets(kEndStyleColumn) != options.end_style_texts.has_value()) {
        throw UsageError("--set end-style and --end-style-texts take each other");
    }
    if (sets(kTrackGainColumn) && options.listening.quick) {
        throw UsageError(
            "--set loudness requires the whole file, --quick decodes only parts of it");
    }
}

// --- running

std::string text_of(const std::string& name, const Listening& heard,
                    const std::optional<std::string>& error, const ListenCommand& options) {
    if (options.json) {
        return listening_json_line(name, heard, options.reference, error);
    }
    if (options.csv) {
        return listening_csv_row(name, heard, options.suggestions.end_styles, error.value_or(""));
    }
    return printable(name) + ": " + listening_text(heard, options.reference) + "\n";
}

std::string text_of_failure(const std::string& name, const std::string& error,
                            const ListenCommand& options) {
    if (options.json) {
        return failure_json_line(name, error);
    }
    return options.csv ? listening_csv_failure(name, options.suggestions.end_styles, error)
                       : std::string();
}

FileResult listen_to(const FoundName& found, const ListenCommand& options) {
    FileResult result;
    Answer& answer = result.answer;
    InputFile file(found);
    std::optional<Listening> heard;
    answer.error = outcome_of(file, [&]() -> std::optional<std::string> {
        heard = listen_to_file(file.header(), file.size(), options.listening);
        return heard ? failure_of(*heard) : "no MPEG audio found";
    });
    answer.bytes = file.size();
    if (!answer.error) {
        result.record = listening_record(*heard);
        result.is_lasting = !file.header().OpeningError();
    } else {
        answer.output = heard ? text_of(found.name, *heard, answer.error, options)
                              : text_of_failure(found.name, *answer.error, options);
    }
    return result;
}

std::optional<std::string> text_of_record(const std::string& name, const std::string& record,
                                          const ListenCommand& options) {
    const auto heard = listening_in(record);
    return heard ? std::optional(text_of(name, *heard, std::nullopt, options)) : std::nullopt;
}

ExitStatus listen_and_set(ListenCommand& options) {
    const PathOptions& given = options.batch;
    const ChangeOptions paths{given, options.yes, options.suggestions.dry_run};
    if (!may_change_files(paths)) {
        return ExitStatus::SomeFileFailed;
    }
    options.batch.changes_files = !paths.dry_run;
    options.batch.named_folders = folders_named_by_input(paths);
    Journal journal(options.journal, "listen");
    std::atomic<std::int64_t> written = 0;
    const BatchOutcome outcome = run_batch(options.batch, [&](const FoundName& found) {
        Answer answer;
        SetReport report;
        const auto step = [&] {
            return set_suggestions(found.name, options.listening, options.suggestions, report,
                                   journal);
        };
        answer.error = found.failure ? found.failure : outcome_of(step);
        answer.output = report.lines;
        written += report.is_written && !answer.error ? 1 : 0;
        return answer;
    });
    if (!options.batch.quiet || outcome.is_interrupted) {
        write_output(outcome.files_text() + ": " + std::to_string(written) + " written, " +
                     std::to_string(outcome.failures) + " failed\n");
    }
    if (paths.dry_run) {
        write_note(journal_size_text(journal));
    }
    return outcome.status();
}

ExitStatus listen(ListenCommand& options) {
    if (const auto reason = reason_against_listening()) {
        write_error("listen: " + *reason);
        return ExitStatus::WrongUsage;
    }
    read_lists(options);
    if (options.set) {
        return listen_and_set(options);
    }
    if (lacks_cache(options.cache, "listen")) {
        return ExitStatus::WrongUsage;
    }
    CachedBatch batch(options.batch, options.cache, listening_command(options.listening));
    if (options.csv) {
        write_output(listening_csv_header(options.suggestions.end_styles));
    }
    const BatchOutcome outcome =
        batch.run([&](const FoundName& found) { return listen_to(found, options); },
                  [](const Counted&) { return true; },
                  [&](const std::string& name, const FileIdentity*, const std::string& record) {
                      return text_of_record(name, record, options);
                  });
    if (!options.batch.quiet || outcome.is_interrupted) {
        const std::string summary =
            outcome.files_text() + ": " + std::to_string(outcome.failures) + " failed\n";
        // Programs expect only facts.
        options.json || options.csv ? write_note(summary) : write_output(summary);
    }
    return outcome.status();
}

}  // namespace

void add_listen(CommandLine& program) {
    const auto options = std::make_shared<ListenCommand>();
    CommandOptions command = program.add(
        "listen", "Measure loudness, find where sound begins and ends, suggest cue points",
        "brindle listen --set cue-in,sectone,loudness --yes /music/new",
        [options] { return listen(*options); });
    command.flag("--json", options->json, "One JSON object per file, on one line");
    command.flag("--csv", options->csv,
                 "Comma-separated values with a header: the suggested values, as apply reads them");
    command.exclusive("--csv", "--json");
    command.text(
        "--set", "LIST", [options](const std::string& list) { options->set = list; },
        "Set suggested values where nothing is set: cue-in, sectone, loudness, end-style, separated "
        "by commas");
    command.exclusive("--set", "--json");
    command.exclusive("--set", "--csv");
    command.flag("--overwrite", options->suggestions.overwrite,
                 "Also replace values that are already set");
    command.flag("--dry-run", options->suggestions.dry_run,
                 "Show old and new values and what a save would do; write nothing");
    command.flag("--yes", options->yes, "Change all files in folders without asking");
    command.journal(options->journal);
    for (const char* option : {"--overwrite", "--dry-run", "--yes", "--no-journal", "--journal"}) {
        command.needs(option, "--set");
    }
    command.text(
        "--end-style-texts", "cold=TEXT,fade=TEXT",
        [options](const std::string& list) { options->end_style_texts = list; },
        "Texts that --set end-style sets and --csv suggests");
    command.flag("--quick", options->listening.quick,
                 "Decode only the first and the last minute of each file");
    constexpr double kMaxUnits = 80;
    command.number("--reference", "LUFS", options->reference, -70, 0,
                   "Show gains that bring files to this loudness (default: -18)");
    command.number("--sound-range", "LU", options->listening.sound_range, 1, kMaxUnits,
                   "Level below the file's loudness down to which there is sound (default: 40)");
    command.number("--overlap-range", "LU", options->listening.overlap_range, 1, kMaxUnits,
                   "Level below the file's loudness from which the next may start (default: 12)");
    command.cache(options->cache);
    command.exclusive("--set", "--cache");
    options->batch.is_busy = true;
    command.batch(options->batch);
}

}  // namespace brindle::host
