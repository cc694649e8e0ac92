// The measurements of a file as a cache keeps them, whatever is printed of them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "listening.h"

namespace brindle::host {

// The command for a cache that keeps records: everything that affects the measurements.
[[nodiscard]] std::string listening_command(const ListenOptions& options);

// Of a file all of whose frames were decoded. Numbers are not rounded.
[[nodiscard]] std::string listening_record(const Listening& heard);
// Nothing if the text is not such a record.
[[nodiscard]] std::optional<Listening> listening_in(std::string_view record);

}  // namespace brindle::host
