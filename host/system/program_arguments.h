// The words of the command line behind the program's name, in UTF-8 or as the system gives them.
#pragma once

#include <string>
#include <vector>

namespace brindle::host {

[[nodiscard]] std::vector<std::string> program_arguments(int argc, char** argv);

}  // namespace brindle::host
