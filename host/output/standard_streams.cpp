#include "output/standard_streams.h"

#include <cerrno>
#include <cstdio>
#include <string>

#include "output/printable_text.h"

namespace brindle::host {

void write_output(std::string_view text) {
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() ||
        std::fflush(stdout) != 0) {
        throw OutputFailure{errno};
    }
}

void close_output() {
    errno = 0;
    if (std::fclose(stdout) != 0) {
        throw OutputFailure{errno};
    }
}

void write_note(std::string_view lines) {
    // This failure can no longer be reported.
    static_cast<void>(std::fwrite(lines.data(), 1, lines.size(), stderr));
}

void write_error(std::string_view what) {
    write_note("brindle: " + printable(what) + "\n");
}

void write_error(std::string_view file_name, std::string_view reason) {
    write_error(std::string(file_name) + ": " + std::string(reason));
}

}  // namespace brindle::host
