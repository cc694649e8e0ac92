// All that is known of one file, for programs to read.
#pragma once

#include <string>

#include <brindle/cMPEGHeader.h>

#include "json_values.h"

namespace brindle::host {

// "file" and every readable member under its own name, in the order of the interface. "v2Tag" maps
// the id of each frame to the list of its values.
[[nodiscard]] Json file_facts(const std::string& name, const cMPEGHeader& header);

// What stands in its place for a file that could not be read.
[[nodiscard]] Json file_failure(const std::string& name, const std::string& reason);

}  // namespace brindle::host
