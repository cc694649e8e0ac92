// The library's values as JSON.
#pragma once

#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

#include <brindle/values.h>

namespace brindle::host {

// Keys stay in the order in which they are added.
using Json = nlohmann::ordered_json;

[[nodiscard]] Json to_json(bool value);
[[nodiscard]] Json to_json(std::int16_t value);
[[nodiscard]] Json to_json(std::int32_t value);
// A whole number is written as one: 1, not 1.0.
[[nodiscard]] Json to_json(double value);
[[nodiscard]] Json to_json(eTagType value);
[[nodiscard]] Json to_json(const String& value);
// null when nothing is there.
[[nodiscard]] Json to_json(const Variant& value);

// One line with its line feed. Bytes that are no UTF-8 become U+FFFD: JSON has no room for them.
[[nodiscard]] std::string json_line(const Json& value);

}  // namespace brindle::host
