// The properties of one file as JSON.
#pragma once

#include <optional>
#include <string>

#include "output/json_values.h"
#include "system/input_file.h"

namespace brindle::host {

enum class FrameValues { Shown, LeftOut };

// Of one file: the fields as hosts read them under the names of the automation interface, then
// "schema", "tag" and "file_facts": the tag and the file as they are. "v2Tag", which is optional,
// maps the id of each frame to the list of its values. The audio's hash is among the facts of the
// file where one is given; "" is that of a file without audio.
[[nodiscard]] Json file_json(InputFile& file, FrameValues values,
                             const std::optional<std::string>& audio_hash = std::nullopt);
// The same as a line that begins with the file's name.
[[nodiscard]] std::string file_json_line(
    InputFile& file, FrameValues values,
    const std::optional<std::string>& audio_hash = std::nullopt);

// For a file that could not be read: its name and "error".
[[nodiscard]] std::string failure_json_line(const std::string& name, const std::string& reason);

}  // namespace brindle::host
