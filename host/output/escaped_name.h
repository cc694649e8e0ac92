// Names of files as UTF-8 text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brindle::host {

// A byte that is no part of UTF-8 becomes the six characters \udc80 to \udcff, and a backslash two.
[[nodiscard]] std::string escaped_name(std::string_view name);
// The name that escaped_name() was given; nothing for text with a lone backslash.
[[nodiscard]] std::optional<std::string> unescaped_name(std::string_view escaped);

}  // namespace brindle::host
