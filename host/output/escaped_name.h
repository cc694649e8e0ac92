// File names as UTF-8 text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brindle::host {

// A byte that is not UTF-8 becomes the six characters \udc80 to \udcff; a backslash is doubled.
[[nodiscard]] std::string escaped_name(std::string_view name);
// The reverse of escaped_name(); nothing for text with a lone backslash.
[[nodiscard]] std::optional<std::string> unescaped_name(std::string_view escaped);

}  // namespace brindle::host
