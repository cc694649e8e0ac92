// Peers that are programs.
#pragma once

#include <string>
#include <vector>

namespace brindle::bench {

// Runs a program to its end, with both outputs thrown away. Ends this one when it fails.
void run_program(std::vector<std::string> arguments);

}  // namespace brindle::bench
