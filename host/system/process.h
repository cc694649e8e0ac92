// What the system hands to the program when it starts: its arguments and its standard streams.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace brindle::host {

// The words of the command line after the program's name, in UTF-8 or as the system gives them.
[[nodiscard]] std::vector<std::string> program_arguments(int argc, char** argv);

// Each file needs the same buffers as the one before. The C library of Linux would give them back
// to the kernel after each, and get them again page by page: a quarter of the processor time of
// a check.
void keep_freed_memory();

// To be called before anything else is opened.
//
// A reader that has gone away (`brindle show ... | head`) is then an error of writing and not a
// signal, which could end the program in the middle of a save. And a program started with one of
// the standard streams closed would otherwise get that number for the first file that it opens, and
// print into a recording.
void prepare_standard_streams();

// Fills `block` with what has come, up to `count` bytes; an empty block is the end, also when the
// program was interrupted while it waited. The answer is why it could not be read, or nothing.
[[nodiscard]] std::optional<std::string> read_input(std::string& block, std::size_t count);

}  // namespace brindle::host
