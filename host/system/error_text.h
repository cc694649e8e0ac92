#pragma once

#include <string>

#include <brindle/error.h>

namespace brindle::host {

// What an error of the library means for a file, in words.
[[nodiscard]] std::string reason_of(const Error& error);

}  // namespace brindle::host
