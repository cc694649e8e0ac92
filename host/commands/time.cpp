// brindle time: milliseconds in a readable form.
#include <charconv>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <system_error>

#include <brindle/cMPEGHeader.h>
#include <brindle/text.h>

#include "commands/command_line.h"
#include "output/standard_streams.h"

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

void add_time(CommandLine& program) {
    const auto options = std::make_shared<TimeOptions>();
    CommandOptions command =
        program.add("time", "Print milliseconds as minutes, seconds and a fraction",
                    "brindle time 62345 --style all", [options] { return time(*options); });
    command.operand(
        "MS",
        [options](const std::string& given) {
            if (!parse_whole(given, options->milliseconds)) {
                throw UsageError("MS: '" + given + "' is not a whole number of 32 bits");
            }
        },
        "Milliseconds, a whole number");
    command.word(
        "--style", "none|fraction|all", {"all", "fraction", "none"},
        [options](const std::string& given) { options->style = given; },
        "none: minutes and seconds (the default); fraction: the fraction alone; all", false);
}

}  // namespace brindle::host
