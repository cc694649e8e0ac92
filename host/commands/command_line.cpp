#include "commands/command_line.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "system/standard_streams.h"

namespace brindle::host {

namespace {

constexpr char kVersion[] = "brindle " BRINDLE_VERSION;

void add_help_and_version(CLI::App& app) {
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", kVersion, "Print the version and exit");
    app.get_formatter()->column_width(26);
}

// The arguments in the reverse order that the parser wants. It would take the argument behind
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

ExitStatus usage_error(const CLI::App& program, const CLI::ParseError& error) {
    std::string called = program.get_name();
    for (const CLI::App* command : program.get_subcommands()) {
        called += " " + command->get_name();
    }
    write_error(error.what());
    write_error("see '" + called + " --help'");
    return ExitStatus::WrongUsage;
}

}  // namespace

CLI::App* add_command(CLI::App& program, const std::string& name, const std::string& description,
                      const std::string& example) {
    CLI::App* command = program.add_subcommand(name, description);
    add_help_and_version(*command);
    command->footer("Example:\n  " + example);
    return command;
}

void add_operands(CLI::App& command, const std::string& name, std::vector<std::string>& values,
                  const std::string& description) {
    // A list of strings would be taken apart at the commas when it is written "[a,b]", and be empty
    // when it is written "{}"; both are good names of files. An option that still waits for more
    // values, and hands them over as they came, does neither.
    CLI::Option* operands = command.add_option(
        name,
        [&values](const CLI::results_t& given) {
            values = given;
            return true;
        },
        description);
    constexpr int kAnyNumber = CLI::detail::expected_max_vector_size;
    operands->required()
        ->expected(kAnyNumber, kAnyNumber)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

ExitStatus run_command_line(std::vector<std::string> arguments,
                            const std::vector<AddCommand>& commands) {
    CLI::App program("Reads and writes what is known of MP3 files", "brindle");
    program.allow_windows_style_options(false);
    program.require_subcommand(1);
    add_help_and_version(program);
    program.footer("Example:\n  brindle show jingle.mp3");
    Command chosen;
    for (const AddCommand add : commands) {
        add(program, chosen);
    }
    try {
        program.parse(for_the_parser(std::move(arguments)));
    } catch (const CLI::Success& request) {
        std::ostringstream text;
        program.exit(request, text, text);
        write_output(text.str());
        return ExitStatus::AllFine;
    } catch (const CLI::ParseError& error) {
        return usage_error(program, error);
    }
    return chosen();
}

}  // namespace brindle::host
