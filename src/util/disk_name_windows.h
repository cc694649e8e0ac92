#pragma once

#include <string>

#include <brindle/values.h>

namespace brindle {

// The name as the system takes it: of any length and in any script. Error 53 for one with a NUL in
// it: the system would end it there and name another file.
[[nodiscard]] std::wstring disk_name(const String& name);

}  // namespace brindle
