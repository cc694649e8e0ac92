// The frame ids of ID3 version 2.2 and those that versions 2.3 and 2.4 use in their place.
#pragma once

#include <string_view>

namespace brindle {

// The id that the later documents give to a frame of version 2.2, or that programs have agreed on
// since; "" for one that has no successor.
[[nodiscard]] std::string_view successor_of_version2_id(std::string_view id) noexcept;

// Whether the id is one of version 2.2 at all.
[[nodiscard]] bool is_version2_id(std::string_view id) noexcept;

}  // namespace brindle
