#pragma once

#include <string_view>

namespace brindle {

[[nodiscard]] bool has_wildcard(std::u16string_view pattern) noexcept;

// True when the whole of `name` is what `pattern` describes: "*" is any run of characters, "?" any
// one, everything else itself, in this case.
[[nodiscard]] bool matches_wildcard(std::u16string_view pattern, std::u16string_view name) noexcept;

}  // namespace brindle
