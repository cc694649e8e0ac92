// Standard output and standard error, with failures that do not go unnoticed.
#pragma once

#include <string_view>

namespace brindle::host {

// Standard output can't be written any more. Nothing is left to do: it ends the program.
struct OutputFailure {
    int error;  // as in errno
};

// Writes and flushes the text, so that a reader of a pipe has each file's answer as soon
// as it is known, and errors appear in their place between the answers.
void write_output(std::string_view text);
// Reports data that the system could not write, at the end of the program.
void close_output();

// Lines for a person on standard error.
void write_note(std::string_view lines);
// `brindle: WHAT` on standard error.
void write_error(std::string_view what);
// `brindle: NAME: REASON` on standard error: always one line, for any name.
void write_error(std::string_view file_name, std::string_view reason);

}  // namespace brindle::host
