// The properties of one file, for people to read.
#pragma once

#include <string>

#include <brindle/cMPEGHeader.h>

namespace brindle::host {

// The file's name and below it the groups Stream, Tags, Scheduling fields and Frames, a line for
// each value. Missing values are omitted.
[[nodiscard]] std::string file_report(const std::string& name, const cMPEGHeader& header);

}  // namespace brindle::host
