// brindle time: milliseconds as people read them.
#include <charconv>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <system_error>

#include <brindle/cMPEGHeader.h>
#include <brindle/text.h>

#include "commands/commands.h"
#include "system/standard_streams.h"

namespace brindle::host {

namespace {

struct TimeOptions {
    std::int32_t milliseconds = 0;
    std::string style = "none";
};

const std::map<std::string, eTimeDisplayStyle> kStyles = {
    {"none", NoFractions},
    {"fraction", OnlyFractions},
    {"all", ShowAll},
};

bool parse_whole(const std::string& text, std::int32_t& number) {
    const char* end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && parsed == end;
}

ExitStatus time(const TimeOptions& options) {
    const cMPEGHeader header;
    const eTimeDisplayStyle style = kStyles.at(options.style);
    write_output(to_utf8(header.ElapsedTimeFromMs(options.milliseconds, style)) + "\n");
    return ExitStatus::AllFine;
}

}  // namespace

void add_time(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<TimeOptions>();
    CLI::App* command =
        add_command(program, "time", "Print milliseconds as minutes, seconds and a fraction",
                    "brindle time 62345 --style all");
    command
        ->add_option(
            "MS",
            [options](const CLI::results_t& given) {
                if (!parse_whole(given.front(), options->milliseconds)) {
                    throw CLI::ValidationError(
                        "MS", "'" + given.front() + "' is no whole number of 32 bits");
                }
                return true;
            },
            "Milliseconds, a whole number")
        ->required();
    command
        ->add_option("--style", options->style,
                     "none: minutes and seconds (the default); fraction: the fraction alone; all")
        ->type_name("none|fraction|all")
        ->check(CLI::IsMember(&kStyles).description(""));
    command->callback([options, &chosen] { chosen = [options] { return time(*options); }; });
}

}  // namespace brindle::host
