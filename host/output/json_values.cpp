#include "output/json_values.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include <brindle/text.h>

namespace brindle::host {

namespace {

// Up to here every whole number has a double of its own.
constexpr double kLargestExactWhole = 9007199254740992.0;  // 2^53

constexpr char16_t kHighSurrogates = 0xD800;
constexpr char16_t kLowSurrogates = 0xDC00;

// What from_utf8() makes of a byte that is no UTF-8.
constexpr bool is_stray_byte(char16_t unit) {
    return unit >= 0xDC80 && unit <= 0xDCFF;
}

}  // namespace

Json to_json(bool value) {
    return value;
}

Json to_json(std::int16_t value) {
    return value;
}

Json to_json(std::int32_t value) {
    return value;
}

Json to_json(double value) {
    if (std::trunc(value) == value && std::abs(value) <= kLargestExactWhole) {
        return static_cast<std::int64_t>(value);
    }
    return value;
}

Json to_json(eTagType value) {
    return static_cast<std::int32_t>(value);
}

Json to_json(const String& value) {
    return to_utf8(value);
}

Json to_json(const Variant& value) {
    if (std::holds_alternative<Empty>(value)) {
        return nullptr;
    }
    if (const auto* truth = std::get_if<bool>(&value)) {
        return to_json(*truth);
    }
    if (const auto* small = std::get_if<std::int16_t>(&value)) {
        return to_json(*small);
    }
    if (const auto* whole = std::get_if<std::int32_t>(&value)) {
        return to_json(*whole);
    }
    if (const auto* real = std::get_if<double>(&value)) {
        return to_json(*real);
    }
    return to_json(std::get<String>(value));
}

std::string json_text(const Variant& value) {
    return to_json(value).dump();
}

std::string json_name(std::string_view name) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string json = "\"";
    String valid;
    const auto append_valid = [&] {
        const std::string quoted = Json(to_utf8(valid)).dump();
        json.append(quoted, 1, quoted.size() - 2);
        valid.clear();
    };
    bool is_in_pair = false;
    for (const char16_t unit : from_utf8(name)) {
        if (is_stray_byte(unit) && !is_in_pair) {
            append_valid();
            json += "\\udc";
            json += kDigits[(unit >> 4) & 0xF];
            json += kDigits[unit & 0xF];
        } else {
            valid.push_back(unit);
        }
        is_in_pair = unit >= kHighSurrogates && unit < kLowSurrogates;
    }
    append_valid();
    return json + "\"";
}

std::string json_line(const std::string& file_name, const Json& facts) {
    constexpr int kOneLine = -1;
    const std::string object = facts.dump(kOneLine, ' ', false, Json::error_handler_t::replace);
    std::string line = "{\"file\":" + json_name(file_name);
    line += facts.empty() ? "" : ",";
    line.append(object, 1);
    return line + "\n";
}

}  // namespace brindle::host
