// brindle check: whether files can go on air.
#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "batch/batch.h"
#include "batch/file_batch.h"
#include "commands/check_file.h"
#include "commands/check_json.h"
#include "commands/check_reasons.h"
#include "commands/check_sound.h"
#include "commands/check_summary.h"
#include "commands/command_line.h"
#include "listen/listen_to_file.h"
#include "output/file_json.h"
#include "output/json_values.h"
#include "output/printable_text.h"
#include "output/standard_streams.h"
#include "system/input_file.h"
#include "system/terminal.h"

namespace brindle::host {

namespace {

struct CheckOptions {
    BatchOptions batch;
    CacheOptions cache;
    bool json = false;
    bool notes = false;
    Verdict least = Verdict::Ok;       // of the files that are printed
    std::vector<std::string> ignored;  // codes
    Verdict fails = Verdict::Bad;      // the exit status is 1 from this verdict
    bool never_fails = false;
    bool listen = false;
    SoundLimits limits;
};

bool has_colours() {
    static const bool colours = wants_colours(Stream::Output);
    return colours;
}

std::string coloured(Verdict verdict, bool colours) {
    constexpr std::array<const char*, 4> kColours{"\x1b[32m", "", "\x1b[33m", "\x1b[31m"};
    constexpr const char* kNoColour = "\x1b[0m";
    const std::string text = word(verdict);
    return colours ? kColours.at(static_cast<std::size_t>(verdict)) + text + kNoColour : text;
}

// `a.mp3: warn: no-title (no title), no-artist (no artist)`
std::string line_of(const std::string& name, const std::vector<Finding>& findings,
                    const CheckOptions& options) {
    std::string line = printable(name) + ": " + coloured(verdict_of(findings), has_colours());
    const char* separator = ": ";
    for (const Finding& finding : findings) {
        if (row_of(finding.reason).verdict == Verdict::Note && !options.notes) {
            continue;
        }
        line +=
            separator + std::string(row_of(finding.reason).code) + " (" + text_of(finding) + ")";
        separator = ", ";
    }
    return line + "\n";
}

FileResult check(const FoundName& found, const CheckOptions& options) {
    FileResult result;
    Answer& answer = result.answer;
    InputFile file(found);
    std::vector<Finding> findings;
    answer.error = outcome_of(file, [&] {
        findings = check_file(file, options.listen ? &options.limits : nullptr);
        return std::nullopt;
    });
    answer.bytes = file.size();
    if (answer.error) {
        answer.output = options.json ? failure_json_line(found.name, *answer.error) : "";
        return result;
    }
    std::erase_if(findings, [&](const Finding& finding) {
        return std::find(options.ignored.begin(), options.ignored.end(),
                         row_of(finding.reason).code) != options.ignored.end();
    });
    const Verdict verdict = verdict_of(findings);
    result.counted = CheckSummary::counted(findings);
    result.is_lasting = !file.header().OpeningError();
    if (verdict >= options.least) {
        answer.output = options.json ? json_line(found.name, findings_json(findings))
                                     : line_of(found.name, findings, options);
    }
    return result;
}

// All that decides what is printed of a file.
std::string words_of(const CheckOptions& options) {
    const auto flag = [](bool is_given, const std::string& name) {
        return is_given ? " " + name : std::string();
    };
    std::string words =
        "check" + flag(options.json, "--json") + flag(options.notes, "--notes") +
        flag(options.least != Verdict::Ok, std::string("--only ") + word(options.least)) +
        flag(!options.json && has_colours(), "in colours");
    const std::set<std::string> ignored(options.ignored.begin(), options.ignored.end());
    for (const std::string& code : ignored) {
        words += " --ignore " + code;
    }
    if (options.listen) {
        const SoundLimits& limits = options.limits;
        words += " --listen";
        for (const double limit : {limits.silent_start, limits.silence_inside, limits.silent_end,
                                   limits.too_loud, limits.too_quiet, limits.sound_range}) {
            std::array<char, 32> digits{};
            const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), limit).ptr;
            words += " " + std::string(digits.data(), end);
        }
    }
    return words;
}

ExitStatus check_all(const CheckOptions& options) {
    if (const auto reason = reason_against_listening(); options.listen && reason) {
        write_error("check --listen: " + *reason);
        return ExitStatus::WrongUsage;
    }
    if (lacks_cache(options.cache, "check")) {
        return ExitStatus::WrongUsage;
    }
    CheckSummary counts;
    BatchOptions files = options.batch;
    files.is_busy = options.listen;
    CachedBatch batch(files, options.cache, words_of(options));
    const BatchOutcome outcome =
        batch.run([&](const FoundName& found) { return check(found, options); },
                  [&](const Counted& counted) { return counts.add(counted); });
    if (!options.batch.quiet || outcome.is_interrupted) {
        const std::string summary = counts.text(outcome);
        // Programs expect only verdicts.
        options.json ? write_note(summary) : write_output(summary);
    }
    const ExitStatus status = outcome.status();
    bool fails = false;
    for (const Verdict verdict : {Verdict::Warn, Verdict::Bad}) {
        fails = fails || (!options.never_fails && verdict >= options.fails &&
                          counts.files_with(verdict) > 0);
    }
    return status == ExitStatus::AllFine && fails ? ExitStatus::SomeFileFailed : status;
}

std::vector<std::string> codes() {
    std::vector<std::string> list;
    for (const ReasonRow& row : reason_table()) {
        if (std::find(list.begin(), list.end(), row.code) == list.end()) {
            list.emplace_back(row.code);
        }
    }
    return list;
}

std::string list_of_codes() {
    constexpr std::size_t kVerdictColumn = 24;
    constexpr std::size_t kMeaningColumn = 30;
    std::string list = "Reasons, by their codes:\n";
    for (const ReasonRow& row : reason_table()) {
        std::string line = std::string("  ") + row.code;
        line.resize(kVerdictColumn, ' ');
        line += word(row.verdict);
        line.resize(kMeaningColumn, ' ');
        list.append(line).append(row.meaning).append(": ").append(row.remedy).append("\n");
    }
    return list + "\n";
}

void add_limits(CommandOptions& command, SoundLimits& limits) {
    constexpr double kLongest = 3'600;
    constexpr double kSoftest = -70;
    const auto seconds = [&](const std::string& name, double& limit, const std::string& what) {
        command.number(
            name, "S", limit, 0, kLongest,
            "With --listen: longest silence " + what + " not reported, in seconds (default: 2)");
        command.needs(name, "--listen");
    };
    seconds("--silent-start", limits.silent_start, "at the beginning");
    seconds("--silence-inside", limits.silence_inside, "inside");
    seconds("--silent-end", limits.silent_end, "at the end");
    command.number("--too-loud", "LUFS", limits.too_loud, kSoftest, 0,
                   "With --listen: highest loudness not reported (default: -7)");
    command.needs("--too-loud", "--listen");
    command.number("--too-quiet", "LUFS", limits.too_quiet, kSoftest, 0,
                   "With --listen: lowest loudness not reported (default: -30)");
    command.needs("--too-quiet", "--listen");
    constexpr double kMaxUnits = 80;
    command.number("--sound-range", "LU", limits.sound_range, 1, kMaxUnits,
                   "With --listen: level of sound below the loudness of the file (default: 40)");
    command.needs("--sound-range", "--listen");
}

}  // namespace

void add_check(CommandLine& program) {
    const auto options = std::make_shared<CheckOptions>();
    CommandOptions command =
        program.add("check", "Report whether each file can go on air: ok, warn or bad",
                    "brindle check --quiet /music/new", [options] { return check_all(*options); });
    command.explanation(list_of_codes());
    command.flag("--json", options->json, "One JSON object per file, on one line");
    command.flag("--notes", options->notes, "Also print notes, which leave the verdict ok");
    command.named_number(
        "--only", "warn|bad",
        {{"warn", static_cast<int>(Verdict::Warn)}, {"bad", static_cast<int>(Verdict::Bad)}},
        [options](int verdict) { options->least = static_cast<Verdict>(verdict); },
        "Print only files with this verdict or a worse one");
    command.words("--ignore", "CODE", codes(), options->ignored,
                  "Ignore this reason; may be given several times");
    command.word(
        "--fail-on", "warn|bad|never", {"warn", "bad", "never"},
        [options](const std::string& value) {
            options->never_fails = value == "never";
            options->fails = value == "warn" ? Verdict::Warn : Verdict::Bad;
        },
        "The verdict from which the exit status is 1 (default: bad)");
    command.flag("--listen", options->listen,
                 "Also decode the audio, and report faults of the sound");
    add_limits(command, options->limits);
    command.cache(options->cache);
    command.batch(options->batch);
}

}  // namespace brindle::host
