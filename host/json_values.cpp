#include "json_values.h"

#include <cmath>

#include <brindle/text.h>

namespace brindle::host {

namespace {

// Up to here every whole number has a double of its own.
constexpr double kLargestExactWhole = 9007199254740992.0;  // 2^53

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

std::string json_line(const Json& value) {
    constexpr int kOneLine = -1;
    return value.dump(kOneLine, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace brindle::host
