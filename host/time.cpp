// brindle time: milliseconds as people read them.
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include <brindle/cMPEGHeader.h>
#include <brindle/text.h>

#include "commands.h"
#include "standard_streams.h"

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
    command->add_option("MS", options->milliseconds, "Milliseconds, a whole number")->required();
    command
        ->add_option("--style", options->style,
                     "none: minutes and seconds (the default); fraction: the fraction alone; all")
        ->type_name("none|fraction|all")
        ->check(CLI::IsMember(&kStyles).description(""));
    command->callback([options, &chosen] { chosen = [options] { return time(*options); }; });
}

}  // namespace brindle::host
