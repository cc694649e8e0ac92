#include "commands/command_line.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <utility>

#include <CLI/CLI.hpp>

#include "commands/csv_reader.h"
#include "output/csv.h"
#include "output/standard_streams.h"

namespace brindle::host {

namespace {

constexpr char kVersion[] = "brindle " BRINDLE_VERSION;

void add_help_and_version(CLI::App& app) {
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", kVersion, "Print the version and exit");
    app.get_formatter()->column_width(26);
}

// The arguments in reverse order, as the parser expects them. It would take the argument after
// `--title=` for the title, so an empty value becomes an argument of its own.
std::vector<std::string> for_the_parser(std::vector<std::string> given) {
    std::vector<std::string> arguments;
    bool are_options = true;
    for (std::string& argument : given) {
        are_options = are_options && argument != "--";
        const bool has_empty_value = are_options && argument.size() > 3 &&
                                     argument.compare(0, 2, "--") == 0 &&
                                     argument.find('=') == argument.size() - 1;
        if (has_empty_value) {
            argument.pop_back();
        }
        arguments.push_back(argument);
        if (has_empty_value) {
            arguments.emplace_back();
        }
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

ExitStatus usage_error(const CLI::App& program, const std::exception& error) {
    std::string called = program.get_name();
    for (const CLI::App* command : program.get_subcommands()) {
        called += " " + command->get_name();
    }
    write_error(error.what());
    write_error("see '" + called + " --help'");
    return ExitStatus::WrongUsage;
}

CLI::Option* add_text(CLI::App& app, const std::string& name, CommandOptions::Take take,
                      const std::string& help) {
    return app.add_option(
        name,
        [take = std::move(take)](const CLI::results_t& given) {
            take(given.front());
            return true;
        },
        help);
}

CLI::Option* add_texts(CLI::App& app, const std::string& name, std::vector<std::string>& values,
                       const std::string& help) {
    return app.add_option(
        name,
        [&values](const CLI::results_t& given) {
            values = given;
            return true;
        },
        help);
}

}  // namespace

bool may_change_files(const ChangeOptions& options) {
    switch (ask_for_folders(options)) {
        case Consent::Given:
            break;
        case Consent::Refused:
            write_error("nothing was changed");
            return false;
        case Consent::NobodyToAsk:
            throw UsageError("Changing all files in a folder requires --yes");
    }
    return true;
}

ExitStatus change_files(const ChangeOptions& options, const PlanStep& plan, Journal& journal) {
    if (!may_change_files(options)) {
        return ExitStatus::SomeFileFailed;
    }
    if (!options.dry_run) {
        return for_each_file(options, plan, journal_groups(journal));
    }
    const ExitStatus status = for_each_file(options, plan, {});
    write_note(journal_size_text(journal));
    return status;
}

std::vector<std::string> words_in(const std::string& option, const std::string& list) {
    try {
        return CsvReader(list, kCsvComma).next();
    } catch (const CsvError& error) {
        throw UsageError(option + ": " + error.what());
    }
}

void CommandOptions::flag(const std::string& names, bool& value, const std::string& help,
                          bool takes_value) {
    CLI::Option* flag = app_.add_flag(names, value, help);
    if (!takes_value) {
        flag->disable_flag_override();
    }
}

CommandOptions CommandOptions::one_of(const std::string& title, const std::string& help) {
    CLI::Option_group* group = app_.add_option_group(title, help);
    group->require_option(1);
    return CommandOptions(*group);
}

void CommandOptions::exclusive(const std::string& one, const std::string& other) {
    app_.get_option(one)->excludes(app_.get_option(other));
}

void CommandOptions::needs(const std::string& one, const std::string& other) {
    app_.get_option(one)->needs(app_.get_option(other));
}

void CommandOptions::require(const std::string& name) {
    app_.get_option(name)->required();
}

void CommandOptions::text(const std::string& name, const std::string& placeholder, Take take,
                          const std::string& help) {
    add_text(app_, name, std::move(take), help)->type_name(placeholder);
}

void CommandOptions::texts(const std::string& name, const std::string& placeholder,
                           std::vector<std::string>& values, const std::string& help) {
    add_texts(app_, name, values, help)
        ->type_name(placeholder)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void CommandOptions::number(const std::string& name, const std::string& unit, double& value,
                            double lowest, double highest, const std::string& help) {
    app_.add_option(name, value, help)
        ->type_name(unit)
        ->check(CLI::Range(lowest, highest).description(""));
}

void CommandOptions::word(const std::string& name, const std::string& placeholder,
                          const std::vector<std::string>& words, Take take, const std::string& help,
                          bool are_listed) {
    CLI::IsMember check(words);
    if (!are_listed) {
        check.description("");
    }
    add_text(app_, name, std::move(take), help)->type_name(placeholder)->check(check);
}

void CommandOptions::words(const std::string& name, const std::string& placeholder,
                           const std::vector<std::string>& allowed,
                           std::vector<std::string>& values, const std::string& help) {
    app_.add_option(name, values, help)
        ->check(CLI::IsMember(allowed))
        ->type_name(placeholder)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->expected(1)
        ->allow_extra_args(false);
}

void CommandOptions::named_number(const std::string& name, const std::string& placeholder,
                                  const std::map<std::string, int>& words,
                                  std::function<void(int)> take, const std::string& help) {
    std::set<int> numbers;
    for (const auto& [word, number] : words) {
        numbers.insert(number);
    }
    app_.add_option_function<int>(name, std::move(take), help)
        ->transform(CLI::Transformer(words))
        ->check(CLI::IsMember(numbers))
        ->type_name(placeholder);
}

void CommandOptions::operand(const std::string& name, Take take, const std::string& help) {
    add_text(app_, name, std::move(take), help)->required();
}

void CommandOptions::operands(const std::string& name, std::vector<std::string>& values,
                              const std::string& help) {
    // The parser would split a list of strings written "[a,b]" at its commas, and take "{}" for an
    // empty one; both are valid file names. An option that takes any number of values, and passes
    // them on unchanged, does neither.
    constexpr int kAnyNumber = CLI::detail::expected_max_vector_size;
    add_texts(app_, name, values, help)
        ->required()
        ->expected(kAnyNumber, kAnyNumber)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void CommandOptions::optional_operands(const std::string& name, std::vector<std::string>& values,
                                       const std::string& help) {
    constexpr int kAnyNumber = CLI::detail::expected_max_vector_size;
    add_texts(app_, name, values, help)
        ->expected(kAnyNumber, kAnyNumber)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void CommandOptions::paths(PathOptions& options) {
    flag("-0,--null", options.null_separated,
         "Names on standard input end with a NUL, not with a line feed");
    operands("PATH", options.paths, "Files, folders, and - for names from standard input");
}

void CommandOptions::changed_paths(ChangeOptions& options, const std::string& help_of_dry_run) {
    flag("--dry-run", options.dry_run, help_of_dry_run);
    flag("--yes", options.yes, "Change all files in folders without asking");
    paths(options);
}

void CommandOptions::batch(BatchOptions& options) {
    app_.add_option(
            "--jobs", options.jobs,
            "Files processed in parallel (default: as many as bring the highest throughput)")
        ->type_name("N")
        ->check(CLI::Range(1U, kMaxJobs).description(""));
    flag("--quiet", options.quiet, "No progress bar and no summary");
    paths(options);
}

void CommandOptions::cache(CacheOptions& options) {
    cache_file(options);
    flag("--new", options.only_new, "With --cache: print only new and changed files");
    needs("--new", "--cache");
}

void CommandOptions::cache_file(CacheOptions& options) {
    text(
        "--cache", "FILE", [&options](const std::string& name) { options.file = name; },
        "Keep the output in this database, and do not read unchanged files again");
}

void CommandOptions::journal(JournalOptions& options) {
    flag("--no-journal", options.none, "Keep no journal; brindle undo cannot take the run back");
    text(
        "--journal", "FILE", [&options](const std::string& name) { options.file = name; },
        "Keep the journal in this new file");
    exclusive("--journal", "--no-journal");
    constexpr std::int64_t kMaxDays = 36'500;
    constexpr std::int64_t kMegabyte = std::int64_t{1024} * 1024;
    constexpr std::int64_t kMaxMegabytes = std::int64_t{1024} * 1024;
    app_.add_option("--journal-days", options.limits.days,
                    "Remove journals that are N days old (default: 90)")
        ->type_name("N")
        ->check(CLI::Range(std::int64_t{0}, kMaxDays).description(""));
    app_.add_option_function<std::int64_t>(
            "--journal-megabytes",
            [&options](std::int64_t megabytes) { options.limits.bytes = megabytes * kMegabyte; },
            "Remove the oldest journals until all take at most N MiB (default: 1024)")
        ->type_name("N")
        ->check(CLI::Range(std::int64_t{0}, kMaxMegabytes).description(""));
}

void CommandOptions::explanation(const std::string& text) {
    app_.footer(text + app_.get_footer());
}

CommandOptions CommandLine::add(const std::string& name, const std::string& help,
                                const std::string& example, Command run) {
    CLI::App* command = program_.add_subcommand(name, help);
    add_help_and_version(*command);
    command->footer("Example:\n  " + example);
    command->callback([this, run = std::move(run)] { chosen_ = run; });
    return CommandOptions(*command);
}

ExitStatus run_command_line(std::vector<std::string> arguments,
                            const std::vector<AddCommand>& commands) {
    CLI::App program("Show, check and edit MP3 files and their tags", "brindle");
    program.allow_windows_style_options(false);
    program.require_subcommand(1);
    add_help_and_version(program);
    program.footer("Example:\n  brindle show jingle.mp3");
    CommandLine command_line(program);
    for (const AddCommand add : commands) {
        add(command_line);
    }
    try {
        program.parse(for_the_parser(std::move(arguments)));
        return command_line.chosen()();
    } catch (const CLI::Success& request) {
        std::ostringstream text;
        program.exit(request, text, text);
        write_output(text.str());
        return ExitStatus::AllFine;
    } catch (const CLI::ParseError& error) {
        return usage_error(program, error);
    } catch (const UsageError& error) {
        return usage_error(program, error);
    }
}

}  // namespace brindle::host
