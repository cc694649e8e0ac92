// brindle genres: the genre numbers and their names.
#include <cstdint>
#include <limits>

#include <brindle/genres.h>
#include <brindle/text.h>

#include "commands/command_line.h"
#include "output/standard_streams.h"

namespace brindle::host {

namespace {

ExitStatus genres() {
    std::string lines;
    for (int number = 0; number <= std::numeric_limits<std::uint8_t>::max(); ++number) {
        const String name = GenreName(static_cast<std::uint8_t>(number));
        if (!name.empty()) {
            lines += std::to_string(number) + " " + to_utf8(name) + "\n";
        }
    }
    write_output(lines);
    return ExitStatus::AllFine;
}

}  // namespace

void add_genres(CommandLine& program) {
    program.add("genres", "Print the genre numbers and their names",
                "brindle genres | grep -i jazz", genres);
}

}  // namespace brindle::host
