#include "system/error_text.h"

#include <cstdint>
#include <string_view>

#include <brindle/text.h>

namespace brindle::host {

namespace {

// Readable texts for run-time errors whose descriptions are only names.
struct Words {
    RuntimeError number;
    std::string_view description;
    std::string_view words;
};
constexpr Words kWords[] = {
    {RuntimeError::InvalidCall, "Invalid procedure call or argument",
     "The file is already being changed"},
    {RuntimeError::Overflow, "Overflow", "A number in the file is too large"},
    {RuntimeError::DeviceInputOutput, "Device I/O error",
     "The device could not be read or written"},
    {RuntimeError::InputPastEnd, "Input past end of file",
     "The file was shortened while it was read"},
    {RuntimeError::TooManyFiles, "Too many files", "Too many files are open"},
    {RuntimeError::PathFileAccess, "Path/File access error", "Permission denied"},
};

}  // namespace

std::string reason_of(const Error& error) {
    constexpr std::int32_t kNotValidMp3File = -2147217407;  // whose text begins with the name
    if (error.number() == kNotValidMp3File) {
        return "The file is empty";
    }
    std::string description = to_utf8(error.description());
    for (const Words& row : kWords) {
        if (error.number() == static_cast<std::int32_t>(row.number) &&
            description == row.description) {
            return std::string(row.words);
        }
    }
    return description;
}

}  // namespace brindle::host
