// The library's values as JSON.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json_fwd.hpp>

#include <brindle/values.h>

namespace brindle::host {

// Keys stay in the order in which they are added. Sources that look into a Json include
// <nlohmann/json.hpp>, which takes seconds to compile.
using Json = nlohmann::ordered_json;

[[nodiscard]] Json to_json(bool value);
[[nodiscard]] Json to_json(std::int16_t value);
[[nodiscard]] Json to_json(std::int32_t value);
// Whole numbers have no decimals: 1, not 1.0.
[[nodiscard]] Json to_json(double value);
[[nodiscard]] Json to_json(eTagType value);
[[nodiscard]] Json to_json(const String& value);
// null for an empty value.
[[nodiscard]] Json to_json(const Variant& value);
// The same as text.
[[nodiscard]] std::string json_text(const Variant& value);

// A file name of the system as a JSON string. A byte that is not UTF-8 is written as the escape
// of U+DC80 to U+DCFF, so that a program can restore the name.
[[nodiscard]] std::string json_name(std::string_view name);
// One line with its line feed: an object that begins with the file's name. Elsewhere, bytes that
// are not UTF-8 become U+FFFD.
[[nodiscard]] std::string json_line(const std::string& file_name, const Json& facts);

}  // namespace brindle::host
