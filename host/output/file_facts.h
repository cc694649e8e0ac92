// All that is known of one file, for programs to read.
#pragma once

#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>

#include "output/json_values.h"

namespace brindle::host {

enum class FrameValues { Shown, LeftOut };

// Every readable member under its own name, in the order of the interface. "v2Tag", which may be
// left out, maps the id of each frame to the list of its values.
[[nodiscard]] Json file_facts(const cMPEGHeader& header, FrameValues values);
// The names without "v2Tag".
[[nodiscard]] std::vector<std::string> fact_names();

// What stands in their place for a file that could not be read.
[[nodiscard]] Json file_failure(const std::string& reason);

}  // namespace brindle::host
